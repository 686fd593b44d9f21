/// Text of elements that have child elements in between.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kvxml/base/internal/words.h"
#include "kvxml/xml/internal/arena.h"

namespace KvXmlLib16::internal {

/// One piece of an element's text, `repeat` times in a row, and the pieces before it.
struct CXmlTextRun {
    const CXmlTextRun* previous;
    const char* characters;
    std::size_t length;
    std::uint64_t repeat;
};

/// The blank pieces of a document. Formatted documents indent all records alike, so their elements share one
/// chain of runs: this is the tree of all such chains.
class CSharedTextRuns {
public:
    /// A chain: its last run and what has followed it so far.
    struct Node : CXmlTextRun {
        Node* expected;  // the follower that was asked for last
        Node* firstFollower;
        Node* nextSibling;
        std::uint32_t depth;
        std::uint32_t followers;
    };

    /// Longer pieces are not shared.
    static constexpr std::size_t kMaxLength = 128;

    /// The empty chain.
    const Node* Root() const noexcept { return &m_root; }
    /// The chain longer by this piece if it is the one expected, else null.
    static const Node* Expected(const Node* chain, const char* text, std::size_t length) noexcept {
        const Node* const expected = chain->expected;
        return expected != nullptr && expected->length == length &&
                       EqualShort(expected->characters, text, length)
                   ? expected
                   : nullptr;
    }
    /// The chain longer by this piece; null when it cannot be shared: it is not blank, or there are too many.
    const Node* Find(const Node* chain, std::string_view text);
    /// Memory of the document's own that holds these blanks, or null.
    const char* FindCharacters(std::string_view text) const noexcept;

private:
    // Bounds on what a document may leave here: this memory is not given back by the element filter.
    static constexpr std::uint32_t kMaxDepth = 32;
    static constexpr std::uint32_t kMaxFollowers = 16;
    static constexpr std::size_t kMaxNodes = 4096;

    Node m_root{};
    std::size_t m_count = 0;
    CArena m_memory;
};

}  // namespace KvXmlLib16::internal
