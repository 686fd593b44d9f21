#include "kvxml/types/internal/character_set.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace KvXmlLib16::internal {

namespace {

constexpr char32_t kFirstSurrogate = 0xD800;
constexpr char32_t kLastSurrogate = 0xDFFF;

constexpr const char* kAnyCharacter = "[\\x{0}-\\x{10ffff}]";
constexpr const char* kNoCharacter = "[^\\x{0}-\\x{10ffff}]";

// Grouped by their first letter.
constexpr std::string_view kCategories[] = {"Lu", "Ll", "Lt", "Lm", "Lo", "Mn", "Mc", "Me", "Nd", "Nl",
                                            "No", "Pc", "Pd", "Ps", "Pe", "Pi", "Pf", "Po", "Zs", "Zl",
                                            "Zp", "Sm", "Sc", "Sk", "So", "Cc", "Cf", "Co", "Cn"};
constexpr CategoryMask kAllCategories = (CategoryMask{1} << std::size(kCategories)) - 1;

// Appends "\x{first}-\x{last}". Surrogates are no characters and no bounds of a range either.
void AppendRange(std::string& out, CodePointRange range) {
    if (range.first >= kFirstSurrogate && range.first <= kLastSurrogate) range.first = kLastSurrogate + 1;
    if (range.last >= kFirstSurrogate && range.last <= kLastSurrogate) range.last = kFirstSurrogate - 1;
    if (range.first > range.last) return;
    const auto append = [&out](char32_t codePoint) {
        char digits[8];
        const auto result =
            std::to_chars(digits, digits + sizeof digits, static_cast<std::uint32_t>(codePoint), 16);
        out += "\\x{";
        out.append(digits, result.ptr);
        out += '}';
    };
    append(range.first);
    if (range.first == range.last) return;
    out += '-';
    append(range.last);
}

// Appends "\p{...}" for each category, or for each group that is complete.
void AppendCategories(std::string& out, CategoryMask categories) {
    for (std::size_t i = 0; i < std::size(kCategories); ++i) {
        if ((categories >> i & 1U) == 0) continue;
        const std::string_view group = kCategories[i].substr(0, 1);
        const CategoryMask whole = FindCategories(group);
        const bool isComplete = (categories & whole) == whole;
        out += "\\p{";
        out += isComplete ? group : kCategories[i];
        out += '}';
        if (isComplete) categories &= ~whole;
    }
}

// --- which code points are in a category -------------------------------------------------------------------

struct CategoryRun {
    CodePointRange range;
    CategoryMask category;  // one bit
};

struct Pcre2Deleter {
    void operator()(pcre2_code* code) const noexcept { pcre2_code_free(code); }
    void operator()(pcre2_match_data* data) const noexcept { pcre2_match_data_free(data); }
};

template <class T>
T* OrBadAlloc(T* made) {
    if (made == nullptr) throw std::bad_alloc();
    return made;
}

void AppendUtf8(std::string& out, char32_t c) {
    const auto byte = [&out](char32_t value) { out += static_cast<char>(value); };
    if (c < 0x80) return byte(c);
    if (c < 0x800) {
        byte(0xC0 | c >> 6);
    } else if (c < 0x10000) {
        byte(0xE0 | c >> 12);
        byte(0x80 | (c >> 6 & 0x3F));
    } else {
        byte(0xF0 | c >> 18);
        byte(0x80 | (c >> 12 & 0x3F));
        byte(0x80 | (c >> 6 & 0x3F));
    }
    byte(0x80 | (c & 0x3F));
}

// PCRE2 is asked, so that a category always is what PCRE2 takes it for.
std::vector<CategoryRun> FindCategoryRuns() {
    std::string pattern;  // (\p{Lu}+)|(\p{Ll}+)|...: the group that matched tells the category
    for (const std::string_view name : kCategories)
        pattern.append(pattern.empty() ? "(\\p{" : "|(\\p{").append(name).append("}+)");
    int error = 0;
    PCRE2_SIZE offset = 0;
    const std::unique_ptr<pcre2_code, Pcre2Deleter> code(
        OrBadAlloc(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(),
                                 PCRE2_UTF | PCRE2_ANCHORED, &error, &offset, nullptr)));
    const std::unique_ptr<pcre2_match_data, Pcre2Deleter> data(
        OrBadAlloc(pcre2_match_data_create_from_pattern(code.get(), nullptr)));
    std::vector<CategoryRun> runs;
    std::string text;
    // Within each of these, all characters have the same length in UTF-8.
    constexpr CodePointRange kSections[] = {{0, 0x7F},
                                            {0x80, 0x7FF},
                                            {0x800, kFirstSurrogate - 1},
                                            {kLastSurrogate + 1, 0xFFFF},
                                            {0x10000, kLastCodePoint}};
    for (const CodePointRange& section : kSections) {
        constexpr char32_t kPart = 0xFFFF;
        for (char32_t first = section.first; first <= section.last; first += kPart + 1) {
            text.clear();
            for (char32_t c = first; c <= section.last && c - first <= kPart; ++c)
                AppendUtf8(text, c);
            const std::size_t width = first < 0x80 ? 1 : (first < 0x800 ? 2 : (first < 0x10000 ? 3 : 4));
            for (std::size_t at = 0; at < text.size();) {
                const int group = pcre2_match(code.get(), reinterpret_cast<PCRE2_SPTR>(text.data()),
                                              text.size(), at, PCRE2_NO_UTF_CHECK, data.get(), nullptr) -
                                  1;
                if (group < 1) throw std::bad_alloc();
                const std::size_t end = pcre2_get_ovector_pointer(data.get())[1];
                runs.push_back({{first + static_cast<char32_t>(at / width),
                                 first + static_cast<char32_t>(end / width) - 1},
                                CategoryMask{1} << (group - 1)});
                at = end;
            }
        }
    }
    return runs;
}

}  // namespace

CategoryMask FindCategories(std::string_view name) noexcept {
    CategoryMask found = 0;
    for (std::size_t i = 0; i < std::size(kCategories); ++i) {
        if (kCategories[i] == name || (name.size() == 1 && kCategories[i][0] == name[0]))
            found |= CategoryMask{1} << i;
    }
    return found;
}

void CCharacterSet::AddAllButCategories(CategoryMask categories) noexcept {
    m_categories |= kAllCategories & ~categories;
}

// --- set arithmetic ----------------------------------------------------------------------------------------

template <class Combine>
std::vector<CCharacterSet::Piece> CCharacterSet::Merge(const std::vector<Piece>& a,
                                                       const std::vector<Piece>& b, Combine combine) {
    std::vector<Piece> merged;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() || j < b.size()) {
        const char32_t first = std::min(i < a.size() ? a[i].first : kLastCodePoint + 1,
                                        j < b.size() ? b[j].first : kLastCodePoint + 1);
        if (i < a.size() && a[i].first == first) ++i;
        if (j < b.size() && b[j].first == first) ++j;
        const CategoryMask categories = combine(a[i - 1].categories, b[j - 1].categories);
        if (merged.empty() || merged.back().categories != categories) merged.push_back({first, categories});
    }
    return merged;
}

void CCharacterSet::Settle() {
    if (!m_pieces.empty()) return;
    std::sort(m_ranges.begin(), m_ranges.end(),
              [](const CodePointRange& a, const CodePointRange& b) { return a.first < b.first; });
    char32_t next = 0;  // after the last piece so far
    for (const CodePointRange& range : m_ranges) {
        if (range.last < next) continue;
        if (range.first > next || m_pieces.empty()) {
            if (range.first > next) m_pieces.push_back({next, m_categories});
            m_pieces.push_back({range.first, kAllCategories});
        }
        next = range.last + 1;
    }
    if (next <= kLastCodePoint) m_pieces.push_back({next, m_categories});
}

void CCharacterSet::Complement() {
    Settle();
    for (Piece& piece : m_pieces)
        piece.categories = kAllCategories & ~piece.categories;
}

void CCharacterSet::Subtract(CCharacterSet& other) {
    Settle();
    other.Settle();
    m_pieces = Merge(m_pieces, other.m_pieces, [](CategoryMask a, CategoryMask b) { return a & ~b; });
}

void CCharacterSet::ResolveCategories() {
    static const std::vector<CategoryRun> runs = FindCategoryRuns();
    std::vector<Piece> resolved;
    std::size_t piece = 0;
    const auto add = [&resolved](char32_t first, bool isIn) {
        const CategoryMask categories = isIn ? kAllCategories : 0;
        if (resolved.empty() || resolved.back().categories != categories)
            resolved.push_back({first, categories});
    };
    for (const CategoryRun& run : runs) {
        while (LastOf(piece) < run.range.first)
            ++piece;
        for (char32_t first = run.range.first;; ++piece) {
            add(first, (m_pieces[piece].categories & run.category) != 0);
            if (LastOf(piece) >= run.range.last) break;
            first = LastOf(piece) + 1;
        }
    }
    m_pieces = std::move(resolved);
}

// --- printing ----------------------------------------------------------------------------------------------

char32_t CCharacterSet::LastOf(std::size_t piece) const noexcept {
    return piece + 1 < m_pieces.size() ? m_pieces[piece + 1].first - 1 : kLastCodePoint;
}

// The categories, and the pieces that are in the set (or are not) as a whole.
std::string CCharacterSet::PrintPieces(CategoryMask categories, bool complement) const {
    std::string text = complement ? "[^" : "[";
    AppendCategories(text, complement ? kAllCategories & ~categories : categories);
    for (std::size_t i = 0; i < m_pieces.size(); ++i) {
        if (m_pieces[i].categories == (complement ? 0 : kAllCategories))
            AppendRange(text, {m_pieces[i].first, LastOf(i)});
    }
    const bool isEmpty = text.size() == (complement ? 2U : 1U);
    if (isEmpty) return complement ? kAnyCharacter : kNoCharacter;
    text += ']';
    return text;
}

std::string CCharacterSet::ToClass() {
    Settle();
    // A class can add code points to categories, or all its complement can; it can not do both, nor have
    // categories for a part of the code points only.
    bool hasWhole = false;
    bool hasNone = false;
    std::optional<CategoryMask> partly;
    for (const Piece& piece : m_pieces) {
        if (piece.categories == kAllCategories) {
            hasWhole = true;
        } else if (piece.categories == 0) {
            hasNone = true;
        } else if (partly && *partly != piece.categories) {
            ResolveCategories();
            return ToClass();
        } else {
            partly = piece.categories;
        }
    }
    if (!partly) {
        const bool reachesEnd = m_pieces.back().categories != 0;
        if (hasWhole && hasNone) return PrintPieces(reachesEnd ? kAllCategories : 0, reachesEnd);
        return hasWhole ? kAnyCharacter : kNoCharacter;
    }
    if (hasWhole && hasNone) {
        ResolveCategories();
        return ToClass();
    }
    if (hasWhole) return PrintPieces(*partly, false);
    if (hasNone) return PrintPieces(*partly, true);
    const std::string in = PrintPieces(*partly, false);
    const std::string out = PrintPieces(*partly, true);
    return in.size() <= out.size() ? in : out;
}

}  // namespace KvXmlLib16::internal
