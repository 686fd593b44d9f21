/// Immutable text shared by reference count, for the element names that every object carries.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>
#include <utility>

#include "kvxml/export.h"

namespace KvXmlLib16::internal {

/// One pointer wide; null is the empty text. Copies share the text and may be made and dropped by different
/// threads. The first few thousand distinct texts of a process, which are more than the names of its schemas,
/// are kept for good: taking and dropping them costs no atomic operation. Later ones are counted.
class KVXML_EXPORT CSharedName {
public:
    CSharedName() noexcept = default;
    explicit CSharedName(std::string_view text) : m_block(text.empty() ? nullptr : Acquire(text)) {}
    CSharedName(const CSharedName& other) noexcept : m_block(other.m_block) { AddReference(); }
    CSharedName(CSharedName&& other) noexcept : m_block(std::exchange(other.m_block, nullptr)) {}
    CSharedName& operator=(CSharedName other) noexcept {
        std::swap(m_block, other.m_block);
        return *this;
    }
    ~CSharedName() { DropReference(); }

    std::string_view View() const noexcept {
        return m_block == nullptr ? std::string_view() : std::string_view(Text(m_block), m_block->length);
    }
    /// Zero-terminated; valid while this object holds the text.
    const char* CStr() const noexcept { return m_block == nullptr ? "" : Text(m_block); }
    bool IsEmpty() const noexcept { return m_block == nullptr; }
    /// Both share one text; false does not mean that the texts differ.
    bool IsSame(const CSharedName& other) const noexcept { return m_block == other.m_block; }

private:
    static constexpr std::uint32_t kKeptForGood = 0x80000000U;
    struct Block {
        std::atomic<std::uint32_t> references;  // or kKeptForGood
        std::uint32_t length;
        // the text and its terminator follow
    };

    static const char* Text(const Block* block) noexcept { return reinterpret_cast<const char*>(block + 1); }
    /// A block to which the caller holds one reference.
    static Block* Acquire(std::string_view text);
    static Block* NewBlock(std::string_view text, std::uint32_t references);
    static Block* FindOrKeep(std::string_view text);
    static void Free(Block* block) noexcept;

    bool IsCounted() const noexcept {
        return m_block != nullptr && m_block->references.load(std::memory_order_relaxed) != kKeptForGood;
    }
    void AddReference() const noexcept {
        if (IsCounted()) m_block->references.fetch_add(1, std::memory_order_relaxed);
    }
    void DropReference() noexcept {
        if (IsCounted() && m_block->references.fetch_sub(1, std::memory_order_acq_rel) == 1) Free(m_block);
    }

    Block* m_block = nullptr;
};

}  // namespace KvXmlLib16::internal
