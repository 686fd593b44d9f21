/// Lines and columns from offsets, counted when they are asked for.
#pragma once

#include <cstdint>
#include <string_view>

namespace KvXmlLib16::internal {

/// How bytes make characters, as far as counting needs it.
enum class CountedEncoding : std::uint8_t { Utf8, SingleByte, Utf16LittleEndian, Utf16BigEndian };

/// Goes forward only. Lines end with a line feed, a carriage return, or both.
class CTextPosition {
public:
    /// The encoding is told by a byte-order mark, the zero bytes of UTF-16 without one, or the declaration;
    /// any but UTF-8 and UTF-16 counts a character for each byte.
    void Begin(std::string_view firstBytes) noexcept;
    /// Whatever the declaration says.
    void SetUtf8() noexcept { m_encoding = CountedEncoding::Utf8; }

    /// Counts the bytes that follow those counted before.
    void Advance(std::string_view bytes) noexcept;

    std::uint64_t GetOffset() const noexcept { return m_offset; }
    std::uint64_t GetLine() const noexcept { return m_line; }
    std::uint64_t GetColumn() const noexcept { return m_column; }

private:
    template <class Character>
    void Count(Character character) noexcept;

    std::uint64_t m_offset = 0;
    std::uint64_t m_line = 1;
    std::uint64_t m_column = 1;
    std::uint64_t m_mark = 0;  // bytes of a byte-order mark
    CountedEncoding m_encoding = CountedEncoding::Utf8;
    bool m_afterReturn = false;
};

}  // namespace KvXmlLib16::internal
