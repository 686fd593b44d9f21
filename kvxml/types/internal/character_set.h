/// Sets of characters, as the classes of regular expressions name them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace KvXmlLib16::internal {

inline constexpr char32_t kLastCodePoint = 0x10FFFF;

/// Code points from `first` to `last`, both included.
struct CodePointRange {
    char32_t first;
    char32_t last;
};

/// General categories of the Unicode standard, one bit each.
using CategoryMask = std::uint32_t;

/// The bits of a category ("Lu") or of a group of categories ("L"); 0 for an unknown name.
CategoryMask FindCategories(std::string_view name) noexcept;

/// A set of code points without surrogates. What is said of whole categories is kept as such, so that set
/// arithmetic needs no table of Unicode.
class CCharacterSet {
public:
    void Add(char32_t codePoint) { Add(CodePointRange{codePoint, codePoint}); }
    void Add(CodePointRange range) { m_ranges.push_back(range); }
    /// `ranges` are sorted and apart from each other.
    template <std::size_t N>
    void Add(const CodePointRange (&ranges)[N]) {
        m_ranges.insert(m_ranges.end(), ranges, ranges + N);
    }
    template <std::size_t N>
    void AddAllBut(const CodePointRange (&ranges)[N]) {
        char32_t next = 0;
        for (const CodePointRange& range : ranges) {
            if (next < range.first) Add({next, range.first - 1});
            next = range.last + 1;
        }
        if (next <= kLastCodePoint) Add({next, kLastCodePoint});
    }
    void AddCategories(CategoryMask categories) noexcept { m_categories |= categories; }
    void AddAllButCategories(CategoryMask categories) noexcept;

    /// To be called after all Add....
    void Complement();
    void Subtract(CCharacterSet& other);

    /// The set as a class of PCRE2: "[...]" or "[^...]".
    std::string ToClass();

private:
    // From `first` to the next piece, the characters of these categories are in the set.
    struct Piece {
        char32_t first;
        CategoryMask categories;
    };

    template <class Combine>
    static std::vector<Piece> Merge(const std::vector<Piece>& a, const std::vector<Piece>& b,
                                    Combine combine);
    /// Makes the pieces of what has been added.
    void Settle();
    char32_t LastOf(std::size_t piece) const noexcept;
    std::string PrintPieces(CategoryMask categories, bool complement) const;
    /// Puts the code points of the categories in the place of the categories.
    void ResolveCategories();

    std::vector<CodePointRange> m_ranges;
    CategoryMask m_categories = 0;
    std::vector<Piece> m_pieces;  // the first one begins at 0
};

}  // namespace KvXmlLib16::internal
