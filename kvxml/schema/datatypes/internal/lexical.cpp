#include "kvxml/schema/datatypes/internal/lexical.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "kvxml/base/internal/ascii.h"
#include "kvxml/xml/internal/xml_name_check.h"

namespace KvXmlLib16::internal {

namespace {

constexpr bool IsBlank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

constexpr bool IsHex(char c) noexcept {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

constexpr bool IsLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::size_t CountDigits(std::string_view text) noexcept {
    std::size_t count = 0;
    while (count < text.size() && IsDigit(text[count]))
        ++count;
    return count;
}

std::string_view TrimLeadingZeros(std::string_view digits) noexcept {
    while (!digits.empty() && digits.front() == '0')
        digits.remove_prefix(1);
    return digits;
}

std::string_view TrimTrailingZeros(std::string_view digits) noexcept {
    while (!digits.empty() && digits.back() == '0')
        digits.remove_suffix(1);
    return digits;
}

Order OrderOf(int order) noexcept {
    return order < 0 ? Order::Less : order > 0 ? Order::Greater : Order::Equal;
}

Order Reverse(Order order) noexcept {
    return order == Order::Less ? Order::Greater : order == Order::Greater ? Order::Less : order;
}

/// Digits after a point: shorter ones are as if followed by zeros, which were left out.
int CompareFractions(std::string_view a, std::string_view b) noexcept {
    return a.compare(b);
}

}  // namespace

// --- numbers -----------------------------------------------------------------------------------------------

bool ParseDecimal(std::string_view text, CDecimalView& value) noexcept {
    value = {};
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        value.isNegative = text.front() == '-';
        text.remove_prefix(1);
    }
    const std::size_t whole = CountDigits(text);
    value.whole = TrimLeadingZeros(text.substr(0, whole));
    text.remove_prefix(whole);
    std::size_t fraction = 0;
    if (!text.empty() && text.front() == '.') {
        text.remove_prefix(1);
        fraction = CountDigits(text);
        value.fraction = TrimTrailingZeros(text.substr(0, fraction));
        text.remove_prefix(fraction);
    }
    if (!text.empty() || whole + fraction == 0) return false;
    if (value.whole.empty() && value.fraction.empty()) value.isNegative = false;
    return true;
}

bool ParseInteger(std::string_view text, CDecimalView& value) noexcept {
    return text.find('.') == std::string_view::npos && ParseDecimal(text, value);
}

Order Compare(const CDecimalView& a, const CDecimalView& b) noexcept {
    if (a.isNegative != b.isNegative) return a.isNegative ? Order::Less : Order::Greater;
    int order = 0;
    if (a.whole.size() != b.whole.size()) {
        order = a.whole.size() < b.whole.size() ? -1 : 1;
    } else {
        order = a.whole.compare(b.whole);
        if (order == 0) order = CompareFractions(a.fraction, b.fraction);
    }
    return a.isNegative ? Reverse(OrderOf(order)) : OrderOf(order);
}

bool ParseBoolean(std::string_view text, bool& value) noexcept {
    value = text == "true" || text == "1";
    return value || text == "false" || text == "0";
}

bool ParseDouble(std::string_view text, bool isFloat, double* result) noexcept {
    double unused = 0;
    double& value = result != nullptr ? *result : unused;
    if (text == "INF" || text == "-INF") {
        value = text.front() == '-' ? -HUGE_VAL : HUGE_VAL;
        return true;
    }
    if (text == "NaN") {
        value = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    // The form first, since the conversion knows others.
    std::string_view rest = text;
    if (!rest.empty() && (rest.front() == '+' || rest.front() == '-')) rest.remove_prefix(1);
    const std::size_t whole = CountDigits(rest);
    rest.remove_prefix(whole);
    std::size_t fraction = 0;
    if (!rest.empty() && rest.front() == '.') {
        rest.remove_prefix(1);
        fraction = CountDigits(rest);
        rest.remove_prefix(fraction);
    }
    if (whole + fraction == 0) return false;
    bool hasNegativeExponent = false;
    if (!rest.empty() && (rest.front() == 'e' || rest.front() == 'E')) {
        rest.remove_prefix(1);
        if (!rest.empty() && (rest.front() == '+' || rest.front() == '-')) {
            hasNegativeExponent = rest.front() == '-';
            rest.remove_prefix(1);
        }
        const std::size_t digits = CountDigits(rest);
        if (digits == 0) return false;
        rest.remove_prefix(digits);
    }
    if (!rest.empty()) return false;
    if (result == nullptr) return true;

    if (text.front() == '+') text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    std::from_chars_result read{};
    if (isFloat) {
        float narrow = 0;
        read = std::from_chars(text.data(), end, narrow);
        value = static_cast<double>(narrow);
    } else {
        read = std::from_chars(text.data(), end, value);
    }
    if (read.ec == std::errc::result_out_of_range) {
        const double magnitude = hasNegativeExponent ? 0.0 : HUGE_VAL;
        value = text.front() == '-' ? -magnitude : magnitude;
    }
    return true;
}

Order CompareDoubles(double a, double b) noexcept {
    if (std::isnan(a) || std::isnan(b))
        return std::isnan(a) && std::isnan(b) ? Order::Equal : Order::Unordered;
    return a < b ? Order::Less : a > b ? Order::Greater : Order::Equal;
}

// --- octets ------------------------------------------------------------------------------------------------

bool ParseHexBinary(std::string_view text, std::size_t& octets) noexcept {
    octets = text.size() / 2;
    return text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), IsHex);
}

bool ParseBase64(std::string_view text, std::size_t& octets) noexcept {
    // Single blanks may stand between any two characters (3.2.16); whitespace was collapsed before.
    std::size_t characters = 0;
    std::size_t padding = 0;
    char last = 'A';
    for (const char c : text) {
        if (c == ' ') continue;
        if (c == '=') {
            if (++padding > 2) return false;
        } else if (padding > 0 || !(IsLetter(c) || IsDigit(c) || c == '+' || c == '/')) {
            return false;
        } else {
            last = c;
        }
        ++characters;
    }
    if (characters % 4 != 0) return false;
    // The bits of the last character that belong to no octet are zero.
    constexpr std::string_view kOneOctet = "AQgw";
    constexpr std::string_view kTwoOctets = "AEIMQUYcgkosw048";
    if (padding == 2 && kOneOctet.find(last) == std::string_view::npos) return false;
    if (padding == 1 && kTwoOctets.find(last) == std::string_view::npos) return false;
    octets = characters / 4 * 3 - padding;
    return true;
}

// --- words -------------------------------------------------------------------------------------------------

bool IsAnyUri(std::string_view text) noexcept {
    if (text.empty()) return true;
    bool hasFragment = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && (i + 2 >= text.size() || !IsHex(text[i + 1]) || !IsHex(text[i + 2])))
            return false;
        if (text[i] == '#') {
            if (hasFragment) return false;
            hasFragment = true;
        }
    }
    // What stands before the first colon, if no other delimiter comes first, is a scheme.
    const std::size_t colon = text.find_first_of(":/?#");
    if (colon != std::string_view::npos && text[colon] == ':') {
        const std::string_view scheme = text.substr(0, colon);
        if (scheme.empty() || !IsLetter(scheme.front())) return false;
        for (const char c : scheme) {
            if (!IsLetter(c) && !IsDigit(c) && c != '+' && c != '-' && c != '.') return false;
        }
        if (colon + 1 == text.size() || text[colon + 1] == '#') return false;
    }
    return true;
}

bool IsLanguage(std::string_view text) noexcept {
    std::size_t length = 0;
    bool isFirst = true;
    for (const char c : text) {
        if (c == '-') {
            if (length == 0) return false;
            length = 0;
            isFirst = false;
        } else if (!(IsLetter(c) || (!isFirst && IsDigit(c))) || ++length > 8) {
            return false;
        }
    }
    return length != 0;
}

bool IsNmtoken(std::string_view text) noexcept {
    if (text.empty()) return false;
    // A character that may stand anywhere in a name: put one that may begin a name before it.
    std::string name = "_";
    name += text;
    return IsXmlName(name, true);
}

std::size_t CountCharacters(std::string_view utf8) noexcept {
    return static_cast<std::size_t>(std::count_if(
        utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string_view TreatWhiteSpace(std::string_view text, WhiteSpace rule, std::string& buffer) {
    if (rule == WhiteSpace::Preserve) return text;
    if (rule == WhiteSpace::Replace) {
        const std::size_t first = text.find_first_of("\t\n\r");
        if (first == std::string_view::npos) return text;
        buffer.assign(text);
        std::replace_if(buffer.begin() + static_cast<std::ptrdiff_t>(first), buffer.end(), IsBlank, ' ');
        return buffer;
    }
    // Most texts have nothing like a blank.
    if (std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) <= ' '; }))
        return text;
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    std::size_t at = 0;
    // The last character is no blank, so there is one after each blank.
    while (at < text.size() && !(IsBlank(text[at]) && (text[at] != ' ' || IsBlank(text[at + 1]))))
        ++at;
    if (at == text.size()) return text;
    buffer.clear();
    bool afterBlank = false;
    for (const char c : text) {
        if (!IsBlank(c)) {
            buffer += c;
        } else if (!afterBlank) {
            buffer += ' ';
        }
        afterBlank = IsBlank(c);
    }
    return buffer;
}

}  // namespace KvXmlLib16::internal
