#include "kvxml/types/base64.h"

#include <array>
#include <cstring>

#include "kvxml/types/internal/base64_blocks.h"

namespace KvXmlLib16 {
namespace {

constexpr std::string_view kAlphabet = internal::kBase64Alphabet;

// The two characters of each 12-bit value.
constexpr auto kPairs = [] {
    std::array<char, 2 * 4096> pairs{};
    for (std::size_t i = 0; i < 4096; ++i) {
        pairs[i * 2] = kAlphabet[i >> 6];
        pairs[i * 2 + 1] = kAlphabet[i & 63];
    }
    return pairs;
}();

constexpr std::uint8_t kSkip = 64;
constexpr std::uint8_t kInvalid = 65;

constexpr auto kValues = [] {
    std::array<std::uint8_t, 256> values{};
    for (std::uint8_t& value : values)
        value = kInvalid;
    const auto set = [&values](char c, std::uint8_t value) {
        const auto index = static_cast<std::size_t>(c);
        values[index] = value;
        values[index + 128] = value;
    };
    for (std::uint8_t i = 0; i < 64; ++i)
        set(kAlphabet[i], i);
    for (const char c : {'\t', '\n', '\r', ' ', '='})
        set(c, kSkip);
    return values;
}();

// Set in an entry of kShifted for a character that has no value.
constexpr std::uint32_t kNoValue = 1U << 31;

// Values by place in a group of four characters, already where they belong in the 24 bits.
constexpr auto kShifted = [] {
    std::array<std::array<std::uint32_t, 256>, 4> shifted{};
    for (std::size_t place = 0; place < 4; ++place) {
        for (std::size_t c = 0; c < 256; ++c) {
            shifted[place][c] = kValues[c] < 64 ? std::uint32_t{kValues[c]} << (18 - 6 * place) : kNoValue;
        }
    }
    return shifted;
}();

std::uint64_t LoadBigEndian(const unsigned char* p) noexcept {
    std::uint64_t value = 0;
    for (int i = 0; i < 8; ++i)
        value = value << 8 | p[i];
    return value;
}

void StoreBigEndian(unsigned char* p, std::uint64_t value) noexcept {
    for (int i = 0; i < 8; ++i)
        p[i] = static_cast<unsigned char>(value >> (56 - 8 * i));
}

void WritePair(char* out, std::uint64_t twelveBits) noexcept {
    std::memcpy(out, &kPairs[static_cast<std::size_t>(twelveBits & 0xfff) * 2], 2);
}

std::uint32_t ReadGroup(const unsigned char* p) noexcept {
    return kShifted[0][p[0]] | kShifted[1][p[1]] | kShifted[2][p[2]] | kShifted[3][p[3]];
}

}  // namespace

void CBase64::Encode(char* out) noexcept {
    const std::size_t encoded = internal::EncodeBase64Blocks(m_source, m_length, out);
    const unsigned char* p = m_source + encoded;
    const unsigned char* const end = m_source + m_length;
    out += encoded / 3 * 4;
    for (; end - p >= 8; p += 6, out += 8) {
        const std::uint64_t bits = LoadBigEndian(p);
        WritePair(out, bits >> 52);
        WritePair(out + 2, bits >> 40);
        WritePair(out + 4, bits >> 28);
        WritePair(out + 6, bits >> 16);
    }
    for (; end - p >= 3; p += 3, out += 4) {
        m_bits = std::uint32_t{p[0]} << 16 | std::uint32_t{p[1]} << 8 | p[2];
        WritePair(out, m_bits >> 12);
        WritePair(out + 2, m_bits);
    }
    if (p == end) return;
    m_bits = std::uint32_t{p[0]} << 16 | (end - p == 2 ? std::uint32_t{p[1]} << 8 : 0);
    WritePair(out, m_bits >> 12);
    out[2] = end - p == 2 ? kAlphabet[m_bits >> 6 & 63] : '=';
    out[3] = '=';
}

std::size_t CBase64::Decode(unsigned char* out) noexcept {
    const unsigned char* p = m_source;
    const unsigned char* const end = p + m_length;
    unsigned char* const begin = out;
    m_bits = 0;
    m_bitCount = 0;
    while (p != end) {
        if (m_bitCount == 0) {
            const std::size_t decoded =
                internal::DecodeBase64Blocks(p, static_cast<std::size_t>(end - p), out);
            p += decoded;
            out += decoded / 4 * 3;
            // Whole groups. Each store spills two bytes over, for which the four characters after them leave
            // room.
            for (; end - p >= 12; p += 8, out += 6) {
                const std::uint32_t high = ReadGroup(p);
                const std::uint32_t low = ReadGroup(p + 4);
                if (((high | low) & kNoValue) != 0) break;
                StoreBigEndian(out, std::uint64_t{high} << 40 | std::uint64_t{low} << 16);
            }
            if (p == end) break;
        }
        const std::uint8_t value = kValues[*p++];
        if (value == kSkip) continue;
        if (value == kInvalid) return 0;
        m_bits = m_bits << 6 | value;
        m_bitCount += 6;
        if (m_bitCount >= 8) {
            m_bitCount -= 8;
            *out++ = static_cast<unsigned char>(m_bits >> m_bitCount);
        }
    }
    return static_cast<std::size_t>(out - begin);
}

}  // namespace KvXmlLib16
