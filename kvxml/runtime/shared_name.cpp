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

CSharedName::Block* CSharedName::Acquire(std::string_view text) {
    thread_local std::array<CSharedName, kRecentNames> recent;
    CSharedName& entry = recent[Slot(text)];
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
