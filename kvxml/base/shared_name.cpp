#include "kvxml/base/shared_name.h"

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/words.h"

namespace KvXmlLib16::internal {

namespace {

// Bounds what is kept for good, whatever names documents bring.
constexpr std::size_t kSlots = 4096;
constexpr std::size_t kLongestKept = 256;
constexpr std::size_t kProbes = 8;

// Eight characters at a time: names are looked up for every object that is made by name.
std::size_t Hash(std::string_view text) noexcept {
    std::uint64_t hash = text.size();
    const auto mix = [&hash](std::uint64_t part) {
        hash = (hash ^ part) * 0x9E3779B97F4A7C15U;
        hash ^= hash >> 32;
    };
    const char* const at = text.data();
    const std::size_t length = text.size();
    // The last part may overlap the one before.
    if (length >= 8) {
        for (std::size_t i = 0; i + 8 < length; i += 8)
            mix(Load<std::uint64_t>(at + i));
        mix(Load<std::uint64_t>(at + length - 8));
    } else if (length >= 4) {
        mix(std::uint64_t{Load<std::uint32_t>(at)} << 32 | Load<std::uint32_t>(at + length - 4));
    } else {
        for (const char character : text)
            mix(static_cast<unsigned char>(character));
    }
    return static_cast<std::size_t>(hash);
}

}  // namespace

CSharedName::Block* CSharedName::NewBlock(std::string_view text, std::uint32_t references) {
    if (text.size() >= std::numeric_limits<std::uint32_t>::max()) {
        throw CKvInvalidParamException("An element name is too long");
    }
    void* memory = ::operator new(sizeof(Block) + text.size() + 1);
    auto* block = new (memory) Block{{references}, static_cast<std::uint32_t>(text.size())};
    auto* characters = reinterpret_cast<char*>(block + 1);
    std::memcpy(characters, text.data(), text.size());
    characters[text.size()] = '\0';
    return block;
}

/// The kept block of the text, made now if there is room for one; otherwise null.
CSharedName::Block* CSharedName::FindOrKeep(std::string_view text) {
    static constinit std::atomic<Block*> kept[kSlots] = {};  // without a destructor: good at any time
    if (text.size() > kLongestKept) return nullptr;
    const std::size_t first = Hash(text);
    for (std::size_t probe = 0; probe < kProbes; ++probe) {
        std::atomic<Block*>& slot = kept[(first + probe) % kSlots];
        Block* block = slot.load(std::memory_order_acquire);
        if (block == nullptr) {
            Block* const created = NewBlock(text, kKeptForGood);
            if (slot.compare_exchange_strong(block, created, std::memory_order_acq_rel)) return created;
            Free(created);  // another thread was first; `block` is what it entered
        }
        if (std::string_view(Text(block), block->length) == text) return block;
    }
    return nullptr;
}

CSharedName::Block* CSharedName::Acquire(std::string_view text) {
    Block* const block = FindOrKeep(text);
    return block != nullptr ? block : NewBlock(text, 1);
}

void CSharedName::Free(Block* block) noexcept {
    block->~Block();
    ::operator delete(block);
}

}  // namespace KvXmlLib16::internal
