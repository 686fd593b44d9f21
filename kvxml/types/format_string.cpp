#include "kvxml/types/format_string.h"

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <limits>
#include <string_view>

#include "kvxml/base/internal/ascii.h"
#include "kvxml/platform/internal/c_locale.h"
#include "kvxml/platform/internal/code_page.h"

namespace KvXmlLib16 {

namespace {

constexpr std::string_view kNullText = "(null)";
constexpr int kAbsent = -1;

// How wide the argument of an integer conversion is, and whether strings and characters are narrow or wide.
enum class Size { Default, Char, Short, Int32, Long, LongLong, Max, Offset, Size, Wide, LongDouble };

// One conversion as written in the format, before any argument has been taken.
struct Conversion {
    bool leftAlign = false;
    std::string flags;
    bool widthFromArgument = false;
    bool precisionFromArgument = false;
    int width = kAbsent;
    int precision = kAbsent;
    Size size = Size::Default;
    char type = '\0';
};

// The arguments still to be used. A structure, so that it can be handed on by reference on every host.
struct Arguments {
    va_list list;
};

// Reads decimal digits; false when the number does not fit an int.
bool ParseNumber(const char*& text, int& number) {
    std::int64_t value = 0;
    for (; internal::IsDigit(*text); ++text) {
        value = value * 10 + (*text - '0');
        if (value > std::numeric_limits<int>::max()) return false;
    }
    number = static_cast<int>(value);
    return true;
}

Size ParseSize(const char*& text) {
    struct Prefix {
        std::string_view text;
        Size size;
    };
    // Longer prefixes stand before those that they begin with.
    static constexpr Prefix kPrefixes[] = {
        {"I64", Size::LongLong}, {"I32", Size::Int32},   {"I", Size::Size}, {"hh", Size::Char},
        {"h", Size::Short},      {"ll", Size::LongLong}, {"l", Size::Long}, {"j", Size::Max},
        {"z", Size::Size},       {"t", Size::Offset},    {"w", Size::Wide}, {"L", Size::LongDouble},
    };
    for (const Prefix& prefix : kPrefixes) {
        if (std::strncmp(text, prefix.text.data(), prefix.text.size()) == 0) {
            text += prefix.text.size();
            return prefix.size;
        }
    }
    return Size::Default;
}

// Parses what follows a '%'. On success `text` stands after the conversion; false for one that is unknown.
bool ParseConversion(const char*& text, Conversion& conversion) {
    const char* next = text;
    for (; *next != '\0' && std::strchr("-+0 #", *next) != nullptr; ++next) {
        if (*next == '-') {
            conversion.leftAlign = true;
        } else if (conversion.flags.find(*next) == std::string::npos) {
            conversion.flags.push_back(*next);
        }
    }
    if (*next == '*') {
        conversion.widthFromArgument = true;
        ++next;
    } else if (internal::IsDigit(*next) && !ParseNumber(next, conversion.width)) {
        return false;
    }
    if (*next == '.') {
        ++next;
        if (*next == '*') {
            conversion.precisionFromArgument = true;
            ++next;
        } else if (!ParseNumber(next, conversion.precision)) {
            return false;
        }
    }
    conversion.size = ParseSize(next);
    conversion.type = *next;
    if (*next == '\0' || std::strchr("cCsSdiouxXeEfFgGaApn%", *next) == nullptr) return false;
    text = next + 1;
    return true;
}

// Takes the arguments of "*" and settles the width and precision.
void TakeWidthAndPrecision(Conversion& conversion, Arguments& arguments) {
    if (conversion.widthFromArgument) {
        const int width = va_arg(arguments.list, int);
        if (width < 0) conversion.leftAlign = true;
        conversion.width = width == std::numeric_limits<int>::min() ? std::numeric_limits<int>::max()
                           : width < 0                              ? -width
                                                                    : width;
    }
    if (conversion.precisionFromArgument) {
        const int precision = va_arg(arguments.list, int);
        conversion.precision = precision < 0 ? kAbsent : precision;
    }
}

// The conversion as the host's printf wants it: width always, precision when there is one, as arguments.
std::string HostFormat(const Conversion& conversion, const char* size) {
    std::string format = "%";
    format.append(conversion.flags);
    if (conversion.leftAlign) format.push_back('-');
    format.append(conversion.precision == kAbsent ? "*" : "*.*").append(size).push_back(conversion.type);
    return format;
}

// Appends one value through the host's printf, whatever room it takes.
template <class T>
void AppendByHost(std::string& result, const Conversion& conversion, const char* size, T value) {
    const std::string format = HostFormat(conversion, size);
    const int width = conversion.width == kAbsent ? 0 : conversion.width;
    const auto print = [&](char* buffer, std::size_t capacity) {
        return conversion.precision == kAbsent
                   ? std::snprintf(buffer, capacity, format.c_str(), width, value)
                   : std::snprintf(buffer, capacity, format.c_str(), width, conversion.precision, value);
    };
    char buffer[128];
    const int length = print(buffer, sizeof(buffer));
    if (length < 0) return;
    const auto needed = static_cast<std::size_t>(length);
    if (needed < sizeof(buffer)) {
        result.append(buffer, needed);
        return;
    }
    const std::size_t start = result.size();
    result.resize(start + needed + 1);
    print(result.data() + start, needed + 1);
    result.resize(start + needed);
}

void AppendInteger(std::string& result, const Conversion& conversion, Arguments& arguments) {
    switch (conversion.size) {
        case Size::Char:
            return AppendByHost(result, conversion, "hh", va_arg(arguments.list, int));
        case Size::Short:
            return AppendByHost(result, conversion, "h", va_arg(arguments.list, int));
        case Size::Long:
            return AppendByHost(result, conversion, "l", va_arg(arguments.list, long));
        case Size::LongLong:
        case Size::LongDouble:
            return AppendByHost(result, conversion, "ll", va_arg(arguments.list, long long));
        case Size::Max:
            return AppendByHost(result, conversion, "j", va_arg(arguments.list, std::intmax_t));
        case Size::Offset:
            return AppendByHost(result, conversion, "t", va_arg(arguments.list, std::ptrdiff_t));
        case Size::Size:
            return AppendByHost(result, conversion, "z", va_arg(arguments.list, std::size_t));
        case Size::Default:
        case Size::Int32:
        case Size::Wide:
            return AppendByHost(result, conversion, "", va_arg(arguments.list, int));
    }
}

void AppendFloat(std::string& result, const Conversion& conversion, Arguments& arguments) {
    const internal::CScopedCLocale locale;
    if (conversion.size == Size::LongDouble) {
        AppendByHost(result, conversion, "L", va_arg(arguments.list, long double));
    } else {
        AppendByHost(result, conversion, "", va_arg(arguments.list, double));
    }
}

void AppendPadded(std::string& result, const Conversion& conversion, std::string_view text) {
    const std::size_t width = conversion.width == kAbsent ? 0 : static_cast<std::size_t>(conversion.width);
    const std::size_t padding = width > text.size() ? width - text.size() : 0;
    if (!conversion.leftAlign) result.append(padding, ' ');
    result.append(text);
    if (conversion.leftAlign) result.append(padding, ' ');
}

bool IsWide(const Conversion& conversion) {
    switch (conversion.size) {
        case Size::Long:
        case Size::LongLong:
        case Size::Wide:
            return true;
        case Size::Char:
        case Size::Short:
            return false;
        default:
            return conversion.type == 'S' || conversion.type == 'C';
    }
}

std::string WideToLocal(std::wstring_view wide) {
    return internal::Utf8ToLocal(internal::WideToUtf8(wide));
}

// A wide string in the local code page; a precision counts bytes and never splits a character.
std::string WideStringToLocal(const wchar_t* wide, int precision) {
    if (precision == kAbsent) return WideToLocal(wide);
    const auto limit = static_cast<std::size_t>(precision);
    std::string result;
    // Every character takes at least one byte, so nothing beyond `limit` of them is looked at.
    for (std::size_t i = 0; i < limit && wide[i] != L'\0';) {
        const bool isPair = sizeof(wchar_t) == 2 && wide[i] >= 0xD800 && wide[i] <= 0xDBFF && i + 1 < limit &&
                            wide[i + 1] >= 0xDC00 && wide[i + 1] <= 0xDFFF;
        const std::size_t units = isPair ? 2 : 1;
        const std::string character = WideToLocal(std::wstring_view(wide + i, units));
        if (result.size() + character.size() > limit) break;
        result.append(character);
        i += units;
    }
    return result;
}

void AppendString(std::string& result, const Conversion& conversion, Arguments& arguments) {
    const std::size_t limit = conversion.precision == kAbsent
                                  ? std::numeric_limits<std::size_t>::max()
                                  : static_cast<std::size_t>(conversion.precision);
    if (IsWide(conversion)) {
        if (const wchar_t* wide = va_arg(arguments.list, const wchar_t*)) {
            return AppendPadded(result, conversion, WideStringToLocal(wide, conversion.precision));
        }
    } else if (const char* text = va_arg(arguments.list, const char*)) {
        // With a precision the text need not end in a zero.
        std::size_t length = 0;
        if (conversion.precision == kAbsent) {
            length = std::strlen(text);
        } else if (limit > 0) {
            const void* end = std::memchr(text, 0, limit);
            length = end == nullptr ? limit : static_cast<std::size_t>(static_cast<const char*>(end) - text);
        }
        return AppendPadded(result, conversion, std::string_view(text, length));
    }
    AppendPadded(result, conversion, kNullText.substr(0, limit));
}

void AppendCharacter(std::string& result, const Conversion& conversion, Arguments& arguments) {
    if (IsWide(conversion)) {
        const auto wide = static_cast<wchar_t>(va_arg(arguments.list, std::wint_t));
        AppendPadded(result, conversion, WideToLocal(std::wstring_view(&wide, 1)));
    } else {
        const auto narrow = static_cast<char>(va_arg(arguments.list, int));
        AppendPadded(result, conversion, std::string_view(&narrow, 1));
    }
}

template <class T>
void StoreCount(std::size_t count, Arguments& arguments) {
    if (T* target = va_arg(arguments.list, T*)) *target = static_cast<T>(count);
}

void StoreCount(std::size_t count, const Conversion& conversion, Arguments& arguments) {
    switch (conversion.size) {
        case Size::Char:
            return StoreCount<signed char>(count, arguments);
        case Size::Short:
            return StoreCount<short>(count, arguments);
        case Size::Long:
            return StoreCount<long>(count, arguments);
        case Size::LongLong:
        case Size::LongDouble:
            return StoreCount<long long>(count, arguments);
        case Size::Max:
            return StoreCount<std::intmax_t>(count, arguments);
        case Size::Offset:
            return StoreCount<std::ptrdiff_t>(count, arguments);
        case Size::Size:
            return StoreCount<std::size_t>(count, arguments);
        case Size::Default:
        case Size::Int32:
        case Size::Wide:
            return StoreCount<int>(count, arguments);
    }
}

void AppendConversion(std::string& result, Conversion& conversion, Arguments& arguments) {
    if (conversion.type == '%') {
        result.push_back('%');
        return;
    }
    TakeWidthAndPrecision(conversion, arguments);
    switch (conversion.type) {
        case 'd':
        case 'i':
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            return AppendInteger(result, conversion, arguments);
        case 's':
        case 'S':
            return AppendString(result, conversion, arguments);
        case 'c':
        case 'C':
            return AppendCharacter(result, conversion, arguments);
        case 'p':
            return AppendByHost(result, conversion, "", va_arg(arguments.list, void*));
        case 'n':
            return StoreCount(result.size(), conversion, arguments);
        default:
            return AppendFloat(result, conversion, arguments);
    }
}

void AppendFormat(std::string& result, const char* format, Arguments& arguments) {
    while (*format != '\0') {
        const char* percent = std::strchr(format, '%');
        if (percent == nullptr) {
            result.append(format);
            return;
        }
        result.append(format, percent);
        format = percent + 1;
        Conversion conversion;
        if (ParseConversion(format, conversion)) {
            AppendConversion(result, conversion, arguments);
        } else {
            result.push_back('%');  // what follows comes through as ordinary text
        }
    }
}

}  // namespace

std::string FormatString(const char* format, ...) {
    std::string result;
    if (format == nullptr) return result;
    Arguments arguments;
    va_start(arguments.list, format);
    try {
        AppendFormat(result, format, arguments);
    } catch (...) {
        va_end(arguments.list);
        throw;
    }
    va_end(arguments.list);
    return result;
}

}  // namespace KvXmlLib16
