/// Reading and writing of short decimal fields of fixed width.
#pragma once

#include <array>
#include <cstring>

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
