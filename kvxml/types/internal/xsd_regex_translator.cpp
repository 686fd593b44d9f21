#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/unicode_blocks.h"
#include "kvxml/types/internal/xsd_regex.h"

namespace KvXmlLib16::internal {

namespace {

constexpr char32_t kLastCodePoint = 0x10FFFF;
constexpr int kMaxClassNesting = 50;
// Longest repetition that PCRE2 takes, and the longest that is put together from such.
constexpr std::uint32_t kMaxRepeat = 65535;
constexpr std::uint32_t kMaxCount = 10000000;
constexpr std::size_t kMaxTranslation = std::size_t{1} << 20;

struct Range {
    char32_t first;
    char32_t last;
};

// NameStartChar of XML 1.0 (Fifth Edition), sorted.
constexpr Range kNameStart[] = {
    {':', ':'},       {'A', 'Z'},       {'_', '_'},       {'a', 'z'},
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
// NameChar, sorted.
constexpr Range kName[] = {
    {'-', '.'},       {'0', ':'},       {'A', 'Z'},         {'_', '_'},       {'a', 'z'},
    {0xB7, 0xB7},     {0xC0, 0xD6},     {0xD8, 0xF6},       {0xF8, 0x37D},    {0x37F, 0x1FFF},
    {0x200C, 0x200D}, {0x203F, 0x2040}, {0x2070, 0x218F},   {0x2C00, 0x2FEF}, {0x3001, 0xD7FF},
    {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
constexpr Range kSpace[] = {{'\t', '\n'}, {'\r', '\r'}, {' ', ' '}};

constexpr std::string_view kCategories[] = {"L",  "Lu", "Ll", "Lt", "Lm", "Lo", "M",  "Mn", "Mc",
                                            "Me", "N",  "Nd", "Nl", "No", "P",  "Pc", "Pd", "Ps",
                                            "Pe", "Pi", "Pf", "Po", "Z",  "Zs", "Zl", "Zp", "S",
                                            "Sm", "Sc", "Sk", "So", "C",  "Cc", "Cf", "Co", "Cn"};

void AppendCodePoint(std::string& out, char32_t codePoint) {
    char digits[8];
    const auto result =
        std::to_chars(digits, digits + sizeof digits, static_cast<std::uint32_t>(codePoint), 16);
    out += "\\x{";
    out.append(digits, result.ptr);
    out += '}';
}

// Surrogates are no characters and no bounds of a range either.
void AppendRange(std::string& out, char32_t first, char32_t last) {
    if (first >= 0xD800 && first <= 0xDFFF) first = 0xE000;
    if (last >= 0xD800 && last <= 0xDFFF) last = 0xD7FF;
    AppendCodePoint(out, first);
    if (first != last) {
        out += '-';
        AppendCodePoint(out, last);
    }
}

// Members of a class, without its brackets.
template <std::size_t N>
void AppendRanges(std::string& out, const Range (&ranges)[N], bool complement) {
    char32_t next = 0;
    for (const Range& range : ranges) {
        if (!complement) {
            AppendRange(out, range.first, range.last);
        } else if (next < range.first) {
            AppendRange(out, next, range.first - 1);
        }
        next = range.last + 1;
    }
    if (complement) AppendRange(out, next, kLastCodePoint);
}

bool IsAsciiPunctuation(char c) {
    return (c >= '!' && c <= '/') || (c >= ':' && c <= '@') || (c >= '[' && c <= '`') ||
           (c >= '{' && c <= '~');
}

class Translator {
public:
    Translator(std::string_view pattern, bool forSideBySide)
        : m_pattern(pattern), m_forSideBySide(forSideBySide) {}

    std::string Run() {
        m_out = "\\A(?:";
        std::vector<std::size_t> open;  // where the groups begin
        std::size_t begin = 0;          // of what a quantifier would repeat
        bool atom = false;              // something that a quantifier may follow
        while (!AtEnd()) {
            const char c = Peek();
            switch (c) {
                case '(':
                    open.push_back(m_out.size());
                    Skip("(?:");
                    atom = false;
                    break;
                case ')':
                    if (open.empty()) Fail("unmatched ')'");
                    begin = open.back();
                    open.pop_back();
                    Skip(")");
                    atom = true;
                    break;
                case '|':
                    Skip("|");
                    atom = false;
                    break;
                case '?':
                case '*':
                case '+':
                case '{':
                    if (!atom) Fail("quantifier without anything to repeat");
                    Quantifier(begin);
                    atom = false;
                    break;
                default:
                    begin = m_out.size();
                    Atom();
                    atom = true;
            }
        }
        if (!open.empty()) Fail("missing ')'");
        m_out += ")\\z";
        return std::move(m_out);
    }

private:
    bool AtEnd() const { return m_position == m_pattern.size(); }
    char Peek() const { return m_pattern[m_position]; }
    bool NextIs(std::size_t offset, char c) const {
        return m_position + offset < m_pattern.size() && m_pattern[m_position + offset] == c;
    }
    void Skip(std::string_view replacement) {
        ++m_position;
        m_out += replacement;
    }
    [[noreturn]] void Fail(const char* error) const {
        throw CKvException(FormatString("Invalid Regular Expression: %s Error: '%s at position %d'",
                                        std::string(m_pattern).c_str(), error, static_cast<int>(m_position)));
    }

    // Digits; what is beyond kMaxCount stays just beyond it.
    std::uint32_t Number() {
        const std::size_t begin = m_position;
        std::uint32_t number = 0;
        for (; !AtEnd() && Peek() >= '0' && Peek() <= '9'; ++m_position)
            number = std::min(number * 10 + static_cast<std::uint32_t>(Peek() - '0'), kMaxCount + 1);
        if (m_position == begin) Fail("digit expected in quantifier");
        return number;
    }

    // Repeats what has been written since `begin`.
    void Quantifier(std::size_t begin) {
        if (Peek() == '+' && m_forSideBySide) {
            ++m_position;
            Repeat(begin, 1, kMaxCount + 1);
            return;
        }
        if (Peek() != '{') {
            Skip(m_pattern.substr(m_position, 1));
            return;
        }
        ++m_position;
        const std::uint32_t least = Number();
        std::uint32_t most = least;
        if (NextIs(0, ',')) {
            ++m_position;
            most = NextIs(0, '}') ? kMaxCount + 1 : Number();
        }
        if (!NextIs(0, '}')) Fail("'}' expected in quantifier");
        if (least > most) Fail("numbers out of order in quantifier");
        if (least > kMaxCount) Fail("number too big in quantifier");
        ++m_position;
        Repeat(begin, least, most);
    }

    void Repeat(std::size_t begin, std::uint32_t least, std::uint32_t most) {
        const bool isBounded = most <= kMaxCount;
        const auto count = [](std::uint32_t number) { return std::to_string(number); };
        const bool isPlus = least > 0 && !isBounded && m_forSideBySide;
        if (least <= kMaxRepeat && (most <= kMaxRepeat || !isBounded) && !isPlus) {
            m_out += '{' + count(least) + ',' + (isBounded ? count(most) : std::string()) + '}';
            return;
        }
        const std::string atom = m_out.substr(begin);
        m_out.resize(begin);
        m_out += "(?:";
        const auto add = [&](std::string& out, const char* from, std::uint32_t number) {
            out += atom + from + count(number) + '}';
            if (out.size() > kMaxTranslation) Fail("regular expression is too large");
        };
        for (std::uint32_t left = least; left > 0; left -= std::min(left, kMaxRepeat))
            add(m_out, "{", std::min(left, kMaxRepeat));
        if (!isBounded) {
            m_out += atom + '*';
        } else if (most > least) {
            // At most n times, such that there is one way to match: kMaxRepeat times and then at most the
            // rest, or fewer times than that.
            std::uint32_t left = most - least;
            std::string optional;
            add(optional, "{0,", left % kMaxRepeat);
            for (left /= kMaxRepeat; left > 0; --left) {
                std::string full = "(?:";
                add(full, "{", kMaxRepeat);
                full += optional + '|';
                add(full, "{0,", kMaxRepeat - 1);
                optional = full + ')';
            }
            m_out += optional;
        }
        m_out += ')';
    }

    void Atom() {
        const char c = Peek();
        if (c == '.') {
            Skip("[^\\n\\r]");
        } else if (c == '[') {
            m_out += Class(0);
        } else if (c == ']') {
            Fail("unmatched ']'");
        } else if (c == '\\') {
            std::string members;
            char32_t single = 0;
            if (Escape(members, single)) AppendCodePoint(members, single);
            m_out += '[';
            m_out += members;
            m_out += ']';
        } else {
            // "^" and "$" are ordinary characters here.
            if (IsAsciiPunctuation(c)) m_out += '\\';
            const std::size_t begin = m_position;
            CodePoint();
            m_out += m_pattern.substr(begin, m_position - begin);
        }
    }

    // Reads an escape. A single character is returned in `single`; a set is appended to `members`. Many
    // schemas escape punctuation that has no meaning ("\\/", "\\_"); it stands for itself.
    bool Escape(std::string& members, char32_t& single) {
        ++m_position;
        if (AtEnd()) Fail("'\\' at the end");
        const char c = Peek();
        ++m_position;
        switch (c) {
            case 'n':
                single = '\n';
                return true;
            case 'r':
                single = '\r';
                return true;
            case 't':
                single = '\t';
                return true;
            case 's':
            case 'S':
                AppendRanges(members, kSpace, c == 'S');
                return false;
            case 'i':
            case 'I':
                AppendRanges(members, kNameStart, c == 'I');
                return false;
            case 'c':
            case 'C':
                AppendRanges(members, kName, c == 'C');
                return false;
            case 'd':
                members += "\\p{Nd}";
                return false;
            case 'D':
                members += "\\P{Nd}";
                return false;
            case 'w':  // all but punctuation, separators and others
                members += "\\p{L}\\p{M}\\p{N}\\p{S}";
                return false;
            case 'W':
                members += "\\p{P}\\p{Z}\\p{C}";
                return false;
            case 'p':
            case 'P':
                Property(members, c == 'P');
                return false;
            default:
                if (!IsAsciiPunctuation(c)) {
                    --m_position;
                    Fail("unknown escape");
                }
                single = static_cast<unsigned char>(c);
                return true;
        }
    }

    // After "\p" or "\P".
    void Property(std::string& members, bool complement) {
        const std::size_t end = m_pattern.find('}', m_position);
        if (!NextIs(0, '{') || end == std::string_view::npos) Fail("'{name}' expected");
        const std::string_view name = m_pattern.substr(m_position + 1, end - m_position - 1);
        Range block{};
        if (std::find(std::begin(kCategories), std::end(kCategories), name) != std::end(kCategories)) {
            members += complement ? "\\P{" : "\\p{";
            members += name;
            members += '}';
        } else if (name == "IsPrivateUse") {  // three blocks of one name
            members += complement ? "\\P{Co}" : "\\p{Co}";
        } else if (name.substr(0, 2) == "Is" && FindUnicodeBlock(name.substr(2), block.first, block.last)) {
            if (!complement) {
                AppendRange(members, block.first, block.last);
            } else {
                if (block.first > 0) AppendRange(members, 0, block.first - 1);
                if (block.last < kLastCodePoint) AppendRange(members, block.last + 1, kLastCodePoint);
            }
        } else {
            Fail("unknown category or block");
        }
        m_position = end + 1;
    }

    char32_t CodePoint() {
        const auto lead = static_cast<unsigned char>(Peek());
        const std::size_t length = lead < 0x80 ? 1 : (lead < 0xE0 ? 2 : (lead < 0xF0 ? 3 : 4));
        if ((lead >= 0x80 && lead < 0xC2) || lead > 0xF4 || m_position + length > m_pattern.size()) {
            Fail("ill-formed UTF-8");
        }
        char32_t codePoint = length == 1 ? lead : lead & (0x7FU >> length);
        for (std::size_t i = 1; i < length; ++i) {
            const auto next = static_cast<unsigned char>(m_pattern[m_position + i]);
            if ((next & 0xC0) != 0x80) Fail("ill-formed UTF-8");
            codePoint = codePoint << 6 | (next & 0x3F);
        }
        constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
        if (codePoint < kLeast[length] || codePoint > kLastCodePoint ||
            (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
            Fail("ill-formed UTF-8");
        }
        m_position += length;
        return codePoint;
    }

    // "[...]", as one class or, with a subtraction "[...-[...]]", as a class that a look-ahead narrows.
    std::string Class(int depth) {
        if (depth > kMaxClassNesting) Fail("too many nested classes");
        ++m_position;
        std::string members = "[";
        if (NextIs(0, '^')) {
            ++m_position;
            members += '^';
        }
        const std::size_t empty = members.size();
        std::string subtraction;
        for (;;) {
            if (AtEnd()) Fail("missing ']'");
            if (Peek() == ']') break;
            if (Peek() == '[') Fail("'[' inside of a class");
            if (Peek() == '-' && NextIs(1, '[')) {
                if (members.size() == empty) Fail("nothing to subtract from");
                ++m_position;
                subtraction = Class(depth + 1);
                if (!NextIs(0, ']')) Fail("']' expected behind a subtraction");
                break;
            }
            char32_t first = 0;
            if (Peek() != '\\') {
                first = CodePoint();
            } else if (!Escape(members, first)) {
                continue;
            }
            // A hyphen makes a range unless it ends the class, begins a subtraction or stands before one.
            const bool isLast = NextIs(1, ']') || NextIs(1, '[') || (NextIs(1, '-') && NextIs(2, '['));
            if (NextIs(0, '-') && !isLast && m_position + 1 < m_pattern.size()) {
                ++m_position;
                char32_t last = 0;
                std::string set;
                if (Peek() != '\\') {
                    last = CodePoint();
                } else if (!Escape(set, last)) {
                    Fail("a range can not end in a set");
                }
                if (last < first) Fail("range out of order");
                AppendRange(members, first, last);
            } else {
                AppendCodePoint(members, first);
            }
        }
        if (members.size() == empty) Fail("empty class");
        ++m_position;
        members += ']';
        if (subtraction.empty()) return members;
        return "(?:(?!" + subtraction + ")" + members + ")";
    }

    std::string_view m_pattern;
    bool m_forSideBySide;
    std::size_t m_position = 0;
    std::string m_out;
};

}  // namespace

std::string TranslateXsdPattern(std::string_view pattern, bool forSideBySide) {
    return Translator(pattern, forSideBySide).Run();
}

}  // namespace KvXmlLib16::internal
