/// Reading and writing of short runs of decimal digits.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kvxml/base/internal/words.h"

namespace KvXmlLib16::internal {

/// Value of a decimal digit; more than 9 for any other character.
inline unsigned DigitValue(char c) noexcept {
    return static_cast<unsigned>(static_cast<unsigned char>(c)) - '0';
}

/// Reads two digits; false when one of them is none.
inline bool ReadTwoDigits(const char* text, int& value) noexcept {
    const unsigned high = DigitValue(text[0]);
    const unsigned low = DigitValue(text[1]);
    value = static_cast<int>(high * 10 + low);
    return high <= 9 && low <= 9;
}

inline bool ReadFourDigits(const char* text, int& value) noexcept {
    int high = 0;
    int low = 0;
    const bool valid = ReadTwoDigits(text, high) && ReadTwoDigits(text + 2, low);
    value = high * 100 + low;
    return valid;
}

/// Reads the eight digits in `word`; false when one of them is none.
inline bool ReadEightDigits(std::uint64_t word, std::uint64_t& value) noexcept {
    constexpr std::uint64_t kHighHalves = 0xf0f0f0f0f0f0f0f0;
    constexpr std::uint64_t kZeros = 0x3030303030303030;
    // '0' to '?' share their high half; adding six takes ':' to '?' out of it.
    const bool valid = (((word ^ kZeros) | ((word + 0x0606060606060606) ^ kZeros)) & kHighHalves) == 0;
    word -= kZeros;
    word = (word * 10 + (word >> 8)) & 0x00ff00ff00ff00ff;
    word = (word * 100 + (word >> 16)) & 0x0000ffff0000ffff;
    value = (word * 10000 + (word >> 32)) & 0xffffffff;
    return valid;
}

/// Reads one to eight digits; false when one of them is none. Reads nothing after them.
inline bool ReadUpToEightDigits(const char* text, std::size_t count, std::uint64_t& value) noexcept {
    if (count == 8) return ReadEightDigits(LoadEight(text), value);
    if constexpr (std::endian::native != std::endian::little) {
        value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (DigitValue(text[i]) > 9) return false;
            value = value * 10 + DigitValue(text[i]);
        }
        return true;
    }
    const std::uint64_t word = LoadUpToEight(text, count);
    // Filled up with zeros in front.
    return ReadEightDigits(word << (64 - 8 * count) | std::uint64_t{0x3030303030303030} >> (8 * count),
                           value);
}

/// Most digits that ReadDigits takes.
inline constexpr std::size_t kMaxReadDigits = 18;

/// Reads 1 to kMaxReadDigits digits; false when one of them is none.
inline bool ReadDigits(const char* text, std::size_t count, std::uint64_t& value) noexcept {
    constexpr std::uint64_t kEightDigits = 100000000;
    if (count <= 8) return ReadUpToEightDigits(text, count, value);
    std::uint64_t last = 0;
    bool valid = ReadEightDigits(LoadEight(text + count - 8), last);
    std::uint64_t front = 0;
    if (count <= 16) {
        valid = ReadUpToEightDigits(text, count - 8, front) && valid;
    } else {
        std::uint64_t middle = 0;
        valid = ReadEightDigits(LoadEight(text + count - 16), middle) && valid;
        valid = ReadUpToEightDigits(text, count - 16, front) && valid;
        front = front * kEightDigits + middle;
    }
    value = front * kEightDigits + last;
    return valid;
}

inline constexpr std::array<char, 200> kTwoDigitTexts = [] {
    std::array<char, 200> texts{};
    for (unsigned i = 0; i < 100; ++i) {
        texts[i * 2] = static_cast<char>('0' + i / 10);
        texts[i * 2 + 1] = static_cast<char>('0' + i % 10);
    }
    return texts;
}();

/// Writes a number below 100 with two digits, returns the end. (`value` is reduced modulo 100.)
inline char* WriteTwoDigits(char* out, unsigned value) noexcept {
    std::memcpy(out, &kTwoDigitTexts[value % 100 * 2], 2);
    return out + 2;
}

/// Writes a number with at least `width` digits, more where it needs them.
inline char* WritePadded(char* out, unsigned value, int width) noexcept {
    char digits[10];
    int count = 0;
    do {
        digits[count++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    for (; width > count; --width)
        *out++ = '0';
    while (count > 0)
        *out++ = digits[--count];
    return out;
}

/// Writes "" for zero, otherwise "." and one to three groups of three digits, as many as are needed.
inline char* WriteFraction(char* out, unsigned milli, unsigned micro, unsigned nano) noexcept {
    if ((milli | micro | nano) == 0) return out;
    *out++ = '.';
    out = WritePadded(out, milli, 3);
    if ((micro | nano) == 0) return out;
    out = WritePadded(out, micro, 3);
    return nano == 0 ? out : WritePadded(out, nano, 3);
}

}  // namespace KvXmlLib16::internal
