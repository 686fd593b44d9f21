#include "kvxml/runtime/shared_name.h"

#include <array>
#include <cstring>
#include <limits>
#include <new>

#include "kvxml/runtime/exceptions.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::size_t kRecentNames = 32;

std::size_t Slot(std::string_view text) noexcept {
    const auto first = static_cast<unsigned char>(text.front());
    const auto last = static_cast<unsigned char>(text.back());
    return (text.size() * 7U + first * 3U + last) % kRecentNames;
}

}  // namespace

// Set once the thread's recent names are gone: objects of static storage outlive them.
thread_local bool t_recentNamesGone = false;

struct CSharedName::RecentNames {
    std::array<CSharedName, kRecentNames> names;
    ~RecentNames() { t_recentNamesGone = true; }
};

CSharedName::Block* CSharedName::Acquire(std::string_view text) {
    thread_local RecentNames recent;
    CSharedName lone;
    CSharedName& entry = t_recentNamesGone ? lone : recent.names[Slot(text)];
    if (entry.View() != text) {
        if (text.size() >= std::numeric_limits<std::uint32_t>::max()) {
            throw CKvInvalidParamException("An element name is too long");
        }
        void* memory = ::operator new(sizeof(Block) + text.size() + 1);
        auto* block = new (memory) Block{{1}, static_cast<std::uint32_t>(text.size())};
        auto* characters = reinterpret_cast<char*>(block + 1);
        std::memcpy(characters, text.data(), text.size());
        characters[text.size()] = '\0';
        CSharedName created;
        created.m_block = block;
        entry = std::move(created);
    }
    entry.AddReference();
    return entry.m_block;
}

void CSharedName::Free(Block* block) noexcept {
    block->~Block();
    ::operator delete(block);
}

}  // namespace KvXmlLib16::internal
