#include "kvxml/xml/internal/text_position.h"

#include <algorithm>
#include <cstring>

#include "kvxml/base/internal/ascii.h"

namespace KvXmlLib16::internal {

namespace {

/// The declaration at the beginning names an encoding that is neither UTF-8 nor ASCII.
bool DeclaresOtherThanUtf8(std::string_view first) noexcept {
    if (first.substr(0, 5) != "<?xml") return false;
    const std::string_view declaration = first.substr(0, first.find("?>"));
    const std::size_t at = declaration.find("encoding");
    if (at == std::string_view::npos) return false;
    const std::size_t quote = declaration.find_first_of("'\"", at);
    if (quote == std::string_view::npos) return false;
    const std::string_view rest = declaration.substr(quote + 1);
    const std::string_view name = rest.substr(0, rest.find(declaration[quote]));
    return !EqualsIgnoreAsciiCase(name, "utf-8") && !EqualsIgnoreAsciiCase(name, "us-ascii");
}

}  // namespace

void CTextPosition::Begin(std::string_view first) noexcept {
    *this = CTextPosition();
    const auto byte = [&](std::size_t i) {
        return i < first.size() ? static_cast<unsigned char>(first[i]) : 1u;
    };
    if (byte(0) == 0xEF && byte(1) == 0xBB && byte(2) == 0xBF) {
        m_mark = 3;
    } else if (byte(0) == 0xFF && byte(1) == 0xFE) {
        m_mark = 2;
        m_encoding = CountedEncoding::Utf16LittleEndian;
    } else if (byte(0) == 0xFE && byte(1) == 0xFF) {
        m_mark = 2;
        m_encoding = CountedEncoding::Utf16BigEndian;
    } else if (byte(0) == '<' && byte(1) == 0) {
        m_encoding = CountedEncoding::Utf16LittleEndian;
    } else if (byte(0) == 0 && byte(1) == '<') {
        m_encoding = CountedEncoding::Utf16BigEndian;
    } else if (DeclaresOtherThanUtf8(first)) {
        m_encoding = CountedEncoding::SingleByte;
    }
}

template <class Character>
void CTextPosition::Count(Character character) noexcept {
    if (character == '\n') {
        if (!m_afterReturn) ++m_line;
        m_column = 1;
    } else if (character == '\r') {
        ++m_line;
        m_column = 1;
    } else {
        ++m_column;
    }
    m_afterReturn = character == '\r';
}

void CTextPosition::Advance(std::string_view bytes) noexcept {
    if (m_offset < m_mark) {
        const auto skipped =
            static_cast<std::size_t>(std::min<std::uint64_t>(m_mark - m_offset, bytes.size()));
        m_offset += skipped;
        bytes.remove_prefix(skipped);
    }
    m_offset += bytes.size();
    if (m_encoding == CountedEncoding::Utf16LittleEndian || m_encoding == CountedEncoding::Utf16BigEndian) {
        const std::size_t low = m_encoding == CountedEncoding::Utf16LittleEndian ? 0 : 1;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            const unsigned unit = static_cast<unsigned char>(bytes[i + low]) |
                                  static_cast<unsigned>(static_cast<unsigned char>(bytes[i + 1 - low])) << 8;
            if (unit < 0xDC00 || unit > 0xDFFF) Count(unit);
        }
        return;
    }
    // Whole lines quickly; their length does not matter.
    if (bytes.empty()) return;
    if (std::memchr(bytes.data(), '\r', bytes.size()) == nullptr) {
        if (m_afterReturn) {
            Count(bytes.front());
            if (bytes.front() != '\n' && m_encoding == CountedEncoding::Utf8 &&
                (static_cast<unsigned char>(bytes.front()) & 0xC0) == 0x80)
                --m_column;
            bytes.remove_prefix(1);
        }
        while (const void* const found = std::memchr(bytes.data(), '\n', bytes.size())) {
            ++m_line;
            m_column = 1;
            bytes.remove_prefix(static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data()) + 1);
            if (bytes.empty()) return;
        }
    }
    for (const char c : bytes) {
        if (m_encoding == CountedEncoding::Utf8 && (static_cast<unsigned char>(c) & 0xC0) == 0x80) continue;
        Count(c);
    }
}

}  // namespace KvXmlLib16::internal
