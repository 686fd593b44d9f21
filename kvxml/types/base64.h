/// Encoder and decoder of base64 text (RFC 4648, standard alphabet).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kvxml/export.h"

namespace KvXmlLib16 {

/// Encodes or decodes one source into memory of the caller. Made for the stack; the source must outlive it.
class KVXML_EXPORT CBase64 {
public:
    CBase64(const unsigned char* source, std::size_t length) noexcept : m_source(source), m_length(length) {}
    explicit CBase64(std::string_view text) noexcept
        : CBase64(reinterpret_cast<const unsigned char*>(text.data()), text.size()) {}
    virtual ~CBase64() = default;

    /// Characters that `Encode` writes for so many bytes.
    static constexpr std::size_t EncodedLength(std::size_t length) noexcept { return (length + 2) / 3 * 4; }
    /// Bytes that `Decode` may write for so many characters.
    static constexpr std::size_t MaxDecodedLength(std::size_t length) noexcept { return length / 4 * 3 + 3; }

    /// Writes the source as base64, padded with "=", without line breaks or terminator.
    void Encode(char* out) noexcept;

    /// Writes the bytes that the source stands for and returns their count. Blanks, tabs, line ends and "="
    /// are passed over wherever they stand, of each character only the low seven bits count, and bits left
    /// over at the end are dropped. Any other character makes the result 0.
    std::size_t Decode(unsigned char* out) noexcept;

private:
    const unsigned char* m_source;
    std::size_t m_length;
    std::uint32_t m_bits = 0;  // low m_bitCount bits are read but not written yet
    int m_bitCount = 0;
};

}  // namespace KvXmlLib16
