#include "kvxml/json/internal/json_scanner.h"

#include <bit>
#include <climits>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/ascii.h"
#include "kvxml/base/internal/words.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {

namespace {

/// Marks bytes that end a run of plain characters; the lowest mark is exact.
constexpr std::uint64_t StopBytes(std::uint64_t word) noexcept {
    return HasByte(word, '"') | HasByte(word, '\\') | HasControl(word);
}

bool IsStop(char character) noexcept {
    return character == '"' || character == '\\' || static_cast<unsigned char>(character) < 0x20;
}

/// First byte that is no plain character of a string, or `end`. Sets `isSpecial` when bytes up to there, or
/// shortly after, are not ASCII.
const char* SkipPlain(const char* text, const char* end, bool& isSpecial) noexcept {
    std::uint64_t seen = 0;
    if constexpr (std::endian::native == std::endian::little) {
        for (; end - text >= 8; text += 8) {
            const auto word = Load<std::uint64_t>(text);
            seen |= word;
            if (const std::uint64_t stops = StopBytes(word)) {
                if (HasNonAscii(seen) != 0) isSpecial = true;
                return text + (std::countr_zero(stops) >> 3);
            }
        }
    }
    for (; text != end && !IsStop(*text); ++text)
        seen |= static_cast<unsigned char>(*text);
    if (HasNonAscii(seen) != 0) isSpecial = true;
    return text;
}

int Clamp(std::size_t number) noexcept {
    return static_cast<int>(std::min<std::size_t>(number, INT_MAX));
}

constexpr const char* kUnpairedSurrogate = "Unpaired surrogate in a string at line %d, position %d.";
constexpr const char* kZeroCharacter = "Zero character in a string at line %d, position %d.";

}  // namespace

CJsonScannerBase::CJsonScannerBase(std::string_view text, const CJsonSyntax& syntax)
    : m_maxDepth(syntax.maxDepth),
      m_begin(text.data()),
      m_end(text.data() + text.size()),
      m_next(text.data()),
      m_illFormed(text.data() + WellFormedUtf8Length(text)),
      m_allowComments(syntax.allowComments) {}

CJsonScannerBase::~CJsonScannerBase() = default;

/// Called with a slash just read. Goes on to the next character that is neither blank nor in a comment;
/// false at the end.
bool CJsonScannerBase::EndsComments() {
    while (m_current == '/' && m_allowComments && m_next != m_end && (*m_next == '/' || *m_next == '*')) {
        const std::string_view rest(m_next + 1, static_cast<std::size_t>(m_end - m_next) - 1);
        const bool isLine = *m_next == '/';
        const std::size_t end = isLine ? rest.find('\n') : rest.find("*/");
        m_next = end == rest.npos ? m_end : rest.data() + end + (isLine ? 1 : 2);
        do {
            if (m_next == m_end) return false;
            m_current = *m_next++;
        } while (m_current == ' ' || m_current == '\n' || m_current == '\t' || m_current == '\r');
    }
    return true;
}

// --- strings ----------------------------------------------------------------------------------------------

CJsonText CJsonScannerBase::ReadString() {
    const char* const begin = m_next;
    bool isSpecial = false;
    for (;;) {
        m_next = SkipPlain(m_next, m_end, isSpecial);
        if (m_next == m_end || *m_next == '\0') break;
        if (*m_next == '\\') break;
        if (*m_next == '"') {
            const std::string_view text(begin, static_cast<std::size_t>(m_next - begin));
            if (m_next > m_illFormed) CheckUtf8(begin);
            ++m_next;
            return {text, true, isSpecial};
        }
        isSpecial = true;  // a control character, taken as it is
        ++m_next;
    }
    return ReadEscapedString(begin, isSpecial);
}

/// The string that begins at `begin` and has plain characters up to here.
CJsonText CJsonScannerBase::ReadEscapedString(const char* begin, bool isSpecial) {
    m_scratch.assign(begin, m_next);
    for (;;) {
        const char* const run = m_next;
        m_next = SkipPlain(m_next, m_end, isSpecial);
        m_scratch.append(run, m_next);
        if (m_next > m_illFormed) CheckUtf8(begin);
        if (m_next == m_end) Fail("Unexpected End of File. Expected string value at line %d, position %d.");
        m_current = *m_next++;
        if (m_current == '"') return {m_scratch, false, isSpecial};
        isSpecial = true;
        if (m_current == '\\') {
            ReadEscape();
        } else if (m_current == '\0') {
            Fail(kZeroCharacter);
        } else {
            m_scratch += m_current;
        }
    }
}

void CJsonScannerBase::ReadEscape() {
    if (m_next == m_end) Fail("Unexpected End of File. Expected string value at line %d, position %d.");
    m_current = *m_next++;
    switch (m_current) {
        case '"':
        case '\\':
        case '/':
            m_scratch += m_current;
            return;
        case 'b':
            m_scratch += '\b';
            return;
        case 'f':
            m_scratch += '\f';
            return;
        case 'n':
            m_scratch += '\n';
            return;
        case 'r':
            m_scratch += '\r';
            return;
        case 't':
            m_scratch += '\t';
            return;
        case 'u':
            ReadUnicodeEscape();
            return;
        default:
            FailAtCharacter("Invalid Escape Character '%c' at line %d, position %d.");
    }
}

void CJsonScannerBase::ReadUnicodeEscape() {
    unsigned code = ReadHexDigits();
    if (code == 0) Fail(kZeroCharacter);
    if (code >= 0xD800 && code <= 0xDFFF) {
        if (code > 0xDBFF || m_end - m_next < 2 || m_next[0] != '\\' || m_next[1] != 'u')
            Fail(kUnpairedSurrogate);
        m_next += 2;
        const unsigned low = ReadHexDigits();
        if (low < 0xDC00 || low > 0xDFFF) Fail(kUnpairedSurrogate);
        code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
    }
    const auto put = [&](unsigned byte) { m_scratch += static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    }
}

unsigned CJsonScannerBase::ReadHexDigits() {
    unsigned code = 0;
    for (int i = 0; i < 4; ++i) {
        if (m_next == m_end) {
            Fail(
                "Unexpected End of File. Expected 4 hexadecimal digits'\\uxxxx' at line %d, position "
                "%d.");
        }
        m_current = *m_next++;
        const char lower = static_cast<char>(m_current | 0x20);
        if (IsDigit(m_current)) {
            code = code << 4 | static_cast<unsigned>(m_current - '0');
        } else if (lower >= 'a' && lower <= 'f') {
            code = code << 4 | static_cast<unsigned>(lower - 'a' + 10);
        } else {
            FailAtCharacter("Invalid Escape Character '%c' at line %d, position %d.");
        }
    }
    return code;
}

/// Fails when the text stops being UTF-8 between `begin` and here.
void CJsonScannerBase::CheckUtf8(const char* begin) {
    if (m_illFormed < begin) {  // in a comment, which may hold anything
        m_illFormed =
            begin + WellFormedUtf8Length(std::string_view(begin, static_cast<std::size_t>(m_end - begin)));
        if (m_next <= m_illFormed) return;
    }
    m_next = m_illFormed + 1;
    Fail("Invalid UTF-8 in a string at line %d, position %d.");
}

// --- numbers and literals ---------------------------------------------------------------------------------

std::string_view CJsonScannerBase::ReadNumber() {
    constexpr const char* kDigitAtEnd =
        "Unexpected End of File. Expected a digit '0' to '9' at line %d, position %d.";
    const char* const begin = m_next - 1;
    if (m_current == '-') {
        ReadDigits("Unexpected End of File. Expected a number at line %d, position %d.");
    } else {
        while (m_next != m_end && IsDigit(*m_next))
            ++m_next;
    }
    if (m_next != m_end && *m_next == '.') {
        ++m_next;
        ReadDigits(kDigitAtEnd);
    }
    if (m_next != m_end && (*m_next == 'e' || *m_next == 'E')) {
        ++m_next;
        if (m_next != m_end && (*m_next == '+' || *m_next == '-')) {
            ++m_next;
            ReadDigits(kDigitAtEnd);
        } else {
            ReadDigits("Unexpected End of File. Expected '+', '-' or a number at line %d, position %d.");
        }
    }
    return {begin, static_cast<std::size_t>(m_next - begin)};
}

/// One digit or more.
void CJsonScannerBase::ReadDigits(const char* atEnd) {
    if (m_next == m_end) Fail(atEnd);
    m_current = *m_next++;
    if (!IsDigit(m_current))
        FailAtCharacter("Expected a digit '0' to '9', found '%c' at line %d, position %d.");
    while (m_next != m_end && IsDigit(*m_next))
        ++m_next;
}

void CJsonScannerBase::ReadLiteral(std::string_view rest, const char* mismatch, const char* atEnd) {
    for (const char expected : rest) {
        if (m_next == m_end) Fail(atEnd);
        m_current = *m_next++;
        if (m_current != expected) Fail(mismatch);
    }
}

// --- errors -----------------------------------------------------------------------------------------------

namespace {

/// Line of what was read last, and the number of bytes read of that line.
void Locate(std::string_view read, int& line, int& position) {
    line = Clamp(1 + static_cast<std::size_t>(std::count(read.begin(), read.end(), '\n')));
    const std::size_t last = read.rfind('\n');
    position = Clamp(last == read.npos ? read.size() : read.size() - last - 1);
}

}  // namespace

void CJsonScannerBase::FailAtCharacter(const char* format) {
    int line = 0;
    int position = 0;
    Locate({m_begin, static_cast<std::size_t>(m_next - m_begin)}, line, position);
    std::string whole(format);
    whole.replace(whole.find("%c"), 2, "%s");
    throw CKvValidationException(FormatString(whole.c_str(), CurrentCharacter().c_str(), line, position),
                                 GetErrorPath());
}

/// The character that begins with the byte just read; "\xFF" for a byte that begins none.
std::string CJsonScannerBase::CurrentCharacter() const {
    const auto byte = static_cast<unsigned char>(m_current);
    if (byte < 0x80) return std::string(1, m_current);
    const std::size_t length = byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
    const std::string_view rest(m_next - 1, static_cast<std::size_t>(m_end - m_next) + 1);
    const std::string_view character = rest.substr(0, length);
    if (character.size() == length && WellFormedUtf8Length(character) == length)
        return std::string(character);
    return FormatString("\\x%02X", static_cast<unsigned>(byte));
}

void CJsonScannerBase::Fail(const char* format) {
    int line = 0;
    int position = 0;
    Locate({m_begin, static_cast<std::size_t>(m_next - m_begin)}, line, position);
    throw CKvValidationException(FormatString(format, line, position), GetErrorPath());
}

}  // namespace KvXmlLib16::internal
