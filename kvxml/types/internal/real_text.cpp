#include "kvxml/types/internal/real_text.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "kvxml/base/exceptions.h"
#include "kvxml/platform/internal/c_locale.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/big_number.h"
#include "kvxml/types/internal/digits.h"

namespace KvXmlLib16::internal {
namespace {

constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1023;

// Numbers of common size have to be multiplied by 10^20 at most to become an integer of 16 digits.
constexpr int kMaxPower = 20;
constexpr double kLeast = 1e-4;

constexpr auto kPowersOfFive = [] {
    std::array<std::uint64_t, kMaxPower + 1> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 5;
    return powers;
}();

// mantissa * 2^exponent * 10^power, rounded half to even. Exact: the product has at most 53 + 47 bits.
std::uint64_t Scale(std::uint64_t mantissa, int exponent, int power) noexcept {
    const UInt128 product = static_cast<UInt128>(mantissa) * kPowersOfFive[static_cast<std::size_t>(power)];
    const int shift = -(exponent + power);
    if (shift <= 0) return static_cast<std::uint64_t>(product << -shift);
    const auto whole = static_cast<std::uint64_t>(product >> shift);
    const UInt128 rest = product - (static_cast<UInt128>(whole) << shift);
    const UInt128 half = static_cast<UInt128>(1) << (shift - 1);
    return whole + (rest > half || (rest == half && (whole & 1) != 0) ? 1 : 0);
}

void WriteEightDigits(char* out, std::uint32_t value) noexcept {
    const std::uint32_t high = value / 10000;
    const std::uint32_t low = value % 10000;
    WriteTwoDigits(WriteTwoDigits(out, high / 100), high % 100);
    WriteTwoDigits(WriteTwoDigits(out + 4, low / 100), low % 100);
}

// How many of sixteen digits are zeros at the end.
int TrailingZeros(const char* digits) noexcept {
    constexpr std::uint64_t kZeros = 0x3030303030303030;
    const std::uint64_t last = LoadEight(digits + 8) ^ kZeros;
    if (last != 0) return std::countl_zero(last) / 8;
    const std::uint64_t first = LoadEight(digits) ^ kZeros;
    return 8 + std::countl_zero(first) / 8;
}

// Widths and precisions beyond this are no formats but mistakes.
constexpr int kMaxFormatNumber = 1000;

bool SkipFormatNumber(std::string_view format, std::size_t& i) {
    int number = 0;
    for (; i < format.size() && format[i] >= '0' && format[i] <= '9'; ++i) {
        number = number * 10 + (format[i] - '0');
        if (number > kMaxFormatNumber) return false;
    }
    return true;
}

// True when printf can take the format with one double as its only argument.
bool IsRealFormat(std::string_view format) {
    int conversions = 0;
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] == '\0') return false;
        if (format[i] != '%') continue;
        ++i;
        if (i < format.size() && format[i] == '%') continue;
        while (i < format.size() && format[i] != '\0' && std::strchr("-+ #0", format[i]) != nullptr)
            ++i;
        if (!SkipFormatNumber(format, i)) return false;
        if (i < format.size() && format[i] == '.') {
            ++i;
            if (!SkipFormatNumber(format, i)) return false;
        }
        if (i < format.size() && format[i] == 'l') ++i;
        if (i >= format.size() || format[i] == '\0' || std::strchr("eEfFgGaA", format[i]) == nullptr)
            return false;
        ++conversions;
    }
    return conversions <= 1;
}

}  // namespace

char* WriteReal(char* out, double value, int digits) noexcept {
    const double magnitude = std::fabs(value);
    // Below the limit a number is not rounded up to one that would need a negative power.
    if (!(magnitude >= kLeast && magnitude < (digits == 16 ? 1e15 : 1e6)) || (digits != 16 && digits != 7)) {
        return std::to_chars(out, out + kMaxRealLength, value, std::chars_format::general, digits).ptr;
    }
    if (value < 0) *out++ = '-';
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const std::uint64_t mantissa = (bits & ((std::uint64_t{1} << kMantissaBits) - 1)) | std::uint64_t{1}
                                                                                            << kMantissaBits;
    const int binary = static_cast<int>(bits >> kMantissaBits) - kExponentBias;
    // The decimal exponent of the power of two below, which may be one too small: then there is a digit more.
    // 1233 / 4096 is log10(2), exact enough for the exponents that can occur.
    int exponent = (binary * 1233) >> 12;
    const std::uint64_t limit = digits == 16 ? 10000000000000000 : 10000000;
    std::uint64_t number = Scale(mantissa, binary - kMantissaBits, digits - 1 - exponent);
    if (number >= limit) {
        ++exponent;
        number = Scale(mantissa, binary - kMantissaBits, digits - 1 - exponent);
    }

    // 16 digits; with 7 of them the others are zeros in front.
    char text[16];
    WriteEightDigits(text, static_cast<std::uint32_t>(number / 100000000));
    WriteEightDigits(text + 8, static_cast<std::uint32_t>(number % 100000000));
    const char* const first = text + 16 - digits;
    const char* end = text + 16;
    const char* const wholeEnd = first + (exponent < 0 ? 0 : exponent + 1);
    end -= TrailingZeros(text);
    if (end < wholeEnd) end = wholeEnd;
    if (exponent < 0) {
        out += std::string_view("0.000").copy(out, static_cast<std::size_t>(1 - exponent));
    } else {
        std::memcpy(out, first, static_cast<std::size_t>(wholeEnd - first));
        out += wholeEnd - first;
        if (end == wholeEnd) return out;
        *out++ = '.';
    }
    std::memcpy(out, wholeEnd, static_cast<std::size_t>(end - wholeEnd));
    return out + (end - wholeEnd);
}

char* WriteXsdReal(char* out, double value, int digits) noexcept {
    const auto word = [out](std::string_view text) { return out + text.copy(out, text.size()); };
    if (!std::isfinite(value)) return std::isnan(value) ? word("NaN") : word(value < 0 ? "-INF" : "INF");
    // Whole numbers of no more digits than asked for are common and need no floating point formatting.
    if (std::fabs(value) < (digits > 7 ? 1e15 : 1e7)) {
        const auto whole = static_cast<std::int64_t>(value);
        if (static_cast<double>(whole) == value && !(whole == 0 && std::signbit(value)))
            return std::to_chars(out, out + kMaxRealLength, whole).ptr;
    }
    return WriteReal(out, value, digits);
}

void CheckRealFormat(std::string_view format) {
    if (IsRealFormat(format)) return;
    throw CKvInvalidParamException(
        FormatString("The format [%s] must have at most one conversion, of a floating point value",
                     std::string(format).c_str()));
}

void AppendFormattedReal(std::string& out, double value, std::string_view format) {
    CheckRealFormat(format);
    const std::string terminated(format);
    const CScopedCLocale locale;
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#endif
    char buffer[64];
    const int length = std::snprintf(buffer, sizeof buffer, terminated.c_str(), value);
    if (length < 0) return;
    const auto size = static_cast<std::size_t>(length);
    if (size < sizeof buffer) {
        out.append(buffer, size);
        return;
    }
    const std::size_t start = out.size();
    out.resize(start + size + 1);
    std::snprintf(out.data() + start, size + 1, terminated.c_str(), value);
    out.resize(start + size);
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
}

}  // namespace KvXmlLib16::internal
