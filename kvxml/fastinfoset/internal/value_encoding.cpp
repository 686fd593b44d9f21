#include "kvxml/fastinfoset/internal/value_encoding.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "kvxml/types/base64.h"

namespace KvXmlLib16::internal {

namespace {

template <class Unsigned>
void AppendBigEndian(std::string& octets, Unsigned value) {
    for (int shift = static_cast<int>(sizeof(value)) * 8 - 8; shift >= 0; shift -= 8)
        octets += static_cast<char>(value >> shift & 0xFF);
}

bool EncodeInteger(std::string_view text, unsigned& algorithm, std::string& octets) {
    const std::string_view digits = text.substr(!text.empty() && text.front() == '-' ? 1 : 0);
    if (digits.empty() || (digits.front() == '0' && text.size() > 1)) return false;
    std::int64_t value;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return false;
    if (value == static_cast<std::int16_t>(value)) {
        algorithm = FastInfosetAlgorithm_Short;
        AppendBigEndian(octets, static_cast<std::uint16_t>(value));
    } else if (value == static_cast<std::int32_t>(value)) {
        algorithm = FastInfosetAlgorithm_Int;
        AppendBigEndian(octets, static_cast<std::uint32_t>(value));
    } else {
        algorithm = FastInfosetAlgorithm_Long;
        AppendBigEndian(octets, static_cast<std::uint64_t>(value));
    }
    return true;
}

/// The shortest text that stands for a number is the one that comes back.
template <class Float, class Bits>
bool EncodeFloat(std::string_view text, std::string& octets) {
    Float value = 0;
    if (text == "INF" || text == "-INF") {
        value = std::numeric_limits<Float>::infinity();
        if (text.front() == '-') value = -value;
    } else if (text == "NaN") {
        value = std::numeric_limits<Float>::quiet_NaN();
    } else {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return false;
        char shortest[64];
        const char* const last = std::to_chars(shortest, shortest + sizeof(shortest), value).ptr;
        if (text != std::string_view(shortest, static_cast<std::size_t>(last - shortest))) return false;
    }
    Bits bits;
    static_assert(sizeof(bits) == sizeof(value));
    std::memcpy(&bits, &value, sizeof(bits));
    AppendBigEndian(octets, bits);
    return true;
}

bool EncodeHex(std::string_view text, std::string& octets) {
    if (text.empty() || text.size() % 2 != 0) return false;
    const auto digit = [](char c) {
        return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 55 : -1;
    };
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = digit(text[i]);
        const int low = digit(text[i + 1]);
        if (high < 0 || low < 0) return false;
        octets += static_cast<char>(high << 4 | low);
    }
    return true;
}

bool EncodeBase64(std::string_view text, std::string& octets) {
    if (text.empty() || text.size() % 4 != 0) return false;
    octets.resize(CBase64::MaxDecodedLength(text.size()));
    octets.resize(CBase64(text).Decode(reinterpret_cast<unsigned char*>(octets.data())));
    if (octets.empty() || CBase64::EncodedLength(octets.size()) != text.size()) return false;
    std::string again(text.size(), '\0');
    CBase64(octets).Encode(again.data());
    return again == text;
}

constexpr std::string_view kAlphabets[] = {"0123456789-+.E ", "0123456789-:TZ "};

/// For each alphabet and character its value plus 1, or 0.
constexpr std::array<std::array<std::uint8_t, 256>, 2> MakeValues() {
    std::array<std::array<std::uint8_t, 256>, 2> values{};
    for (std::size_t alphabet = 0; alphabet < values.size(); ++alphabet) {
        for (std::size_t i = 0; i < kAlphabets[alphabet].size(); ++i)
            values[alphabet][static_cast<unsigned char>(kAlphabets[alphabet][i])] =
                static_cast<std::uint8_t>(i + 1);
    }
    return values;
}
constexpr auto kValues = MakeValues();

}  // namespace

bool EncodeValue(ItemType type, std::string_view text, unsigned& algorithm, std::string& octets) {
    octets.clear();
    switch (type) {
        case ItemType_i1:
        case ItemType_i2:
        case ItemType_i4:
        case ItemType_i8:
        case ItemType_ui1:
        case ItemType_ui2:
        case ItemType_ui4:
        case ItemType_ui8:
        case ItemType_integer:
            return EncodeInteger(text, algorithm, octets);
        case ItemType_r4:
            algorithm = FastInfosetAlgorithm_Float;
            return EncodeFloat<float, std::uint32_t>(text, octets);
        case ItemType_r8:
            algorithm = FastInfosetAlgorithm_Double;
            return EncodeFloat<double, std::uint64_t>(text, octets);
        case ItemType_boolean:
            algorithm = FastInfosetAlgorithm_Boolean;
            if (text != "true" && text != "false") return false;
            octets += text == "true" ? '\x38' : '\x30';  // three unused bits, and the value
            return true;
        case ItemType_hexBinary:
            algorithm = FastInfosetAlgorithm_Hexadecimal;
            return EncodeHex(text, octets);
        case ItemType_base64Binary:
            algorithm = FastInfosetAlgorithm_Base64;
            return EncodeBase64(text, octets);
        default:
            return false;
    }
}

bool PackText(std::string_view text, unsigned& alphabet, std::string& octets) {
    for (alphabet = 0; alphabet < kValues.size(); ++alphabet) {
        octets.clear();
        const std::array<std::uint8_t, 256>& values = kValues[alphabet];
        std::size_t i = 0;
        for (unsigned high = 0; i < text.size(); ++i) {
            const unsigned value = values[static_cast<unsigned char>(text[i])];
            if (value == 0) break;
            if (i % 2 == 0)
                high = value - 1;
            else
                octets += static_cast<char>(high << 4 | (value - 1));
            if (i % 2 == 0 && i + 1 == text.size()) octets += static_cast<char>(high << 4 | 0xF);
        }
        if (i == text.size() && i != 0) return true;
    }
    return false;
}

}  // namespace KvXmlLib16::internal
