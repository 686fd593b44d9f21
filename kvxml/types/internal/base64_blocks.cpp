#include "kvxml/types/internal/base64_blocks.h"

#if defined(__x86_64__) && defined(__GNUC__)

#include <tmmintrin.h>

#include <array>
#include <cstdint>

namespace KvXmlLib16::internal {
namespace {

constexpr std::size_t kBytes = 12;
constexpr std::size_t kCharacters = 16;

bool HasByteShuffle() noexcept {
    static const bool has = __builtin_cpu_supports("ssse3") != 0;
    return has;
}

__attribute__((target("ssse3"))) __m128i Load(const unsigned char* p) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

/// 12 bytes to 16 numbers of six bits.
__attribute__((target("ssse3"))) __m128i SplitBits(__m128i bytes) noexcept {
    // Each 32-bit lane gets the bytes b, a, c, b of its group of three: aaaaaabb bbbbcccc ccdddddd.
    const __m128i groups =
        _mm_shuffle_epi8(bytes, _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    // Multiplications shift the two 16-bit halves by different distances.
    const __m128i firstAndThird =
        _mm_mulhi_epu16(_mm_and_si128(groups, _mm_set1_epi32(0x0fc0fc00)), _mm_set1_epi32(0x04000040));
    const __m128i secondAndFourth =
        _mm_mullo_epi16(_mm_and_si128(groups, _mm_set1_epi32(0x003f03f0)), _mm_set1_epi32(0x01000010));
    return _mm_or_si128(firstAndThird, secondAndFourth);
}

/// Numbers of six bits to characters: each range of the alphabet has one distance between the two.
__attribute__((target("ssse3"))) __m128i ToCharacters(__m128i values) noexcept {
    // Range: 0 for lower case, 1 to 10 for digits, 11 "+", 12 "/", 13 upper case.
    const __m128i range =
        _mm_or_si128(_mm_subs_epu8(values, _mm_set1_epi8(51)),
                     _mm_and_si128(_mm_cmplt_epi8(values, _mm_set1_epi8(26)), _mm_set1_epi8(13)));
    constexpr char kDigit = '0' - 52;
    const __m128i distances = _mm_setr_epi8('a' - 26, kDigit, kDigit, kDigit, kDigit, kDigit, kDigit, kDigit,
                                            kDigit, kDigit, kDigit, '+' - 62, '/' - 63, 'A', 0, 0);
    return _mm_add_epi8(values, _mm_shuffle_epi8(distances, range));
}

__attribute__((target("ssse3"))) std::size_t EncodeBlocks(const unsigned char* source, std::size_t length,
                                                          char* out) noexcept {
    std::size_t used = 0;
    for (; length - used >= kCharacters; used += kBytes, out += kCharacters) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), ToCharacters(SplitBits(Load(source + used))));
    }
    return used;
}

/// By the low half of a character: a bit for each high half with which it belongs to the alphabet.
constexpr auto kKnownHighs = [] {
    std::array<std::uint8_t, 16> highs{};
    for (const char c : kBase64Alphabet) {
        highs[static_cast<std::size_t>(c) & 15] |= static_cast<std::uint8_t>(1 << (c >> 4));
    }
    return highs;
}();

__attribute__((target("ssse3"))) std::size_t DecodeBlocks(const unsigned char* text, std::size_t length,
                                                          unsigned char* out) noexcept {
    constexpr char kUpper = -'A';
    constexpr char kLower = 26 - 'a';
    const __m128i distances = _mm_setr_epi8(0, 63 - '/', 62 - '+', 52 - '0', kUpper, kUpper, kLower, kLower,
                                            0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i bitOfHigh =
        _mm_setr_epi8(1, 2, 4, 8, 16, 32, 64, static_cast<char>(128), 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i knownHighs = Load(kKnownHighs.data());
    std::size_t used = 0;
    for (; length - used >= kCharacters + 8; used += kCharacters, out += kBytes) {
        const __m128i c = _mm_and_si128(Load(text + used), _mm_set1_epi8(0x7f));
        // The table of low halves has a bit for each high half with which they make a known character.
        const __m128i high = _mm_and_si128(_mm_srli_epi32(c, 4), _mm_set1_epi8(0x0f));
        const __m128i known =
            _mm_and_si128(_mm_shuffle_epi8(knownHighs, c), _mm_shuffle_epi8(bitOfHigh, high));
        if (_mm_movemask_epi8(_mm_cmpeq_epi8(known, _mm_setzero_si128())) != 0) break;

        // The slash shares its high half with the plus sign and has the unused place below that.
        const __m128i range = _mm_add_epi8(high, _mm_cmpeq_epi8(c, _mm_set1_epi8('/')));
        const __m128i values = _mm_add_epi8(c, _mm_shuffle_epi8(distances, range));
        // Six and six bits to twelve, twelve and twelve to 24, then the three bytes of each lane in order.
        const __m128i twelves = _mm_maddubs_epi16(values, _mm_set1_epi32(0x01400140));
        const __m128i lanes = _mm_madd_epi16(twelves, _mm_set1_epi32(0x00011000));
        const __m128i bytes =
            _mm_shuffle_epi8(lanes, _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
    }
    return used;
}

}  // namespace

std::size_t EncodeBase64Blocks(const unsigned char* source, std::size_t length, char* out) noexcept {
    return HasByteShuffle() ? EncodeBlocks(source, length, out) : 0;
}

std::size_t DecodeBase64Blocks(const unsigned char* text, std::size_t length, unsigned char* out) noexcept {
    return HasByteShuffle() ? DecodeBlocks(text, length, out) : 0;
}

}  // namespace KvXmlLib16::internal

#else

namespace KvXmlLib16::internal {

std::size_t EncodeBase64Blocks(const unsigned char*, std::size_t, char*) noexcept {
    return 0;
}

std::size_t DecodeBase64Blocks(const unsigned char*, std::size_t, unsigned char*) noexcept {
    return 0;
}

}  // namespace KvXmlLib16::internal

#endif
