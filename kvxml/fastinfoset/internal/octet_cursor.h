/// Reads the octets of a Fast Infoset document: integers, lengths and the errors about them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace KvXmlLib16::internal {

/// A position in a document. Every function checks that the octets are there; what does not fit is a
/// CKvException that tells the offset. Indexes are counted from 0.
class COctetCursor {
public:
    COctetCursor(const unsigned char* data, std::size_t length) noexcept
        : m_begin(data), m_at(data), m_end(data + length) {}

    std::size_t Offset() const noexcept { return static_cast<std::size_t>(m_at - m_begin); }
    std::size_t Left() const noexcept { return static_cast<std::size_t>(m_end - m_at); }
    std::size_t Size() const noexcept { return static_cast<std::size_t>(m_end - m_begin); }

    /// The next octet, which must be there; it is not taken.
    unsigned Peek() const {
        if (m_at == m_end) FailAtEnd();
        return *m_at;
    }
    unsigned Octet() {
        if (m_at == m_end) FailAtEnd();
        return *m_at++;
    }
    /// So many octets; without a copy.
    std::string_view Octets(std::uint64_t length) {
        if (length > Left()) Fail("A length reaches beyond the end of the document");
        const char* const octets = reinterpret_cast<const char*>(m_at);
        m_at += length;
        return std::string_view(octets, static_cast<std::size_t>(length));
    }

    /// An index that starts on the second bit of `first`, the octet just taken; the first bit does not count.
    std::uint32_t IndexOnBit2(unsigned first) {
        first &= 0x7F;
        if (first < 0x40) return first;
        if (first < 0x60) return ((first & 0x1F) << 8 | Octet()) + 64;
        if (first < 0x70) return ((first & 0x0F) << 16 | Number(2)) + 8256;
        FailBefore("Reserved bits are set in an index");
    }
    std::uint32_t IndexOnBit3(unsigned first) {
        first &= 0x3F;
        if (first < 0x20) return first;
        if (first < 0x28) return ((first & 0x07) << 8 | Octet()) + 32;
        if (first < 0x30) return ((first & 0x07) << 16 | Number(2)) + 2080;
        if (first == 0x30) return LongIndex() + 526368;
        FailBefore("Reserved octet");
    }
    std::uint32_t IndexOnBit4(unsigned first) {
        first &= 0x1F;
        if (first < 0x10) return first;
        if (first < 0x14) return ((first & 0x03) << 8 | Octet()) + 16;
        if (first < 0x18) return ((first & 0x03) << 16 | Number(2)) + 1040;
        if (first == 0x18) return LongIndex() + 263184;
        FailBefore("Reserved octet");
    }

    /// The length of a string of octets that starts on the second bit of `first`, whose first bit does not
    /// count.
    std::uint64_t LengthOnBit2(unsigned first) {
        first &= 0x7F;
        if (first < 0x40) return first + 1;
        if (first == 0x40) return std::uint64_t{Octet()} + 65;
        if (first == 0x60) return LongLength(321);
        FailBefore("Reserved bits are set in a length");
    }
    std::uint64_t LengthOnBit5(unsigned first) {
        first &= 0x0F;
        if (first < 8) return first + 1;
        if (first == 8) return std::uint64_t{Octet()} + 9;
        if (first == 0x0C) return LongLength(265);
        FailBefore("Reserved bits are set in a length");
    }
    std::uint64_t LengthOnBit7(unsigned first) {
        first &= 0x03;
        if (first < 2) return first + 1;
        if (first == 2) return std::uint64_t{Octet()} + 3;
        return LongLength(259);
    }
    /// Number of items of a sequence.
    std::uint32_t SequenceLength();

    /// What went wrong at the next octet.
    [[noreturn]] void Fail(const std::string& what) const { FailAt(Offset(), what); }
    [[noreturn]] static void FailAt(std::size_t offset, const std::string& what);

private:
    std::uint32_t Number(int octets) {
        std::uint32_t number = 0;
        for (; octets > 0; --octets)
            number = number << 8 | Octet();
        return number;
    }
    std::uint32_t LongIndex();
    std::uint64_t LongLength(std::uint64_t base);
    [[noreturn]] void FailBefore(const char* what) const { FailAt(Offset() - 1, what); }
    [[noreturn]] void FailAtEnd() const { FailAt(Size(), "The document ends early"); }

    const unsigned char* m_begin;
    const unsigned char* m_at;
    const unsigned char* m_end;
};

}  // namespace KvXmlLib16::internal
