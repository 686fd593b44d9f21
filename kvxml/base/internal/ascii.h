/// ASCII characters and words, whatever the locale is.
#pragma once

#include <string_view>

namespace KvXmlLib16::internal {

constexpr bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

inline char ToLowerAscii(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool EqualsIgnoreAsciiCase(std::string_view a, std::string_view b) noexcept {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (ToLowerAscii(a[i]) != ToLowerAscii(b[i])) return false;
    }
    return true;
}

}  // namespace KvXmlLib16::internal
