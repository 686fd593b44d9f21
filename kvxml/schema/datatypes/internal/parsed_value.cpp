#include "kvxml/schema/datatypes/internal/parsed_value.h"

#include <charconv>
#include <cmath>

#include "kvxml/xml/internal/xml_name_check.h"

namespace KvXmlLib16::internal {

namespace {

/// A name with or without prefix.
bool ParseQName(std::string_view text, const IPrefixScope* scope, CParsedValue& value) {
    const std::size_t colon = text.find(':');
    const std::string_view prefix =
        colon == std::string_view::npos ? std::string_view() : text.substr(0, colon);
    value.localName = colon == std::string_view::npos ? text : text.substr(colon + 1);
    if (!IsXmlName(value.localName, false)) return false;
    if (colon != std::string_view::npos && !IsXmlName(prefix, false)) return false;
    if (scope == nullptr) return true;
    return scope->Resolve(prefix, value.namespaceUri) || prefix.empty();
}

bool ParseString(BuiltInType type, std::string_view text) {
    switch (type) {
        case BuiltInType::Language:
            return IsLanguage(text);
        case BuiltInType::NMTOKEN:
            return IsNmtoken(text);
        case BuiltInType::Name:
            return IsXmlName(text, true);
        case BuiltInType::NCName:
        case BuiltInType::ID:
        case BuiltInType::IDREF:
        case BuiltInType::ENTITY:
            return IsXmlName(text, false);
        default:
            return true;
    }
}

void AppendNumber(std::string& key, std::int64_t number) {
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
    key.append(buffer, result.ptr);
}

void AppendUpperHex(std::string& key, std::string_view text) {
    for (const char c : text)
        key += c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

bool ParseValue(BuiltInType type, BuiltInType primitive, std::string_view text, const IPrefixScope* scope,
                CParsedValue& value) {
    value.primitive = primitive;
    value.text = text;
    switch (primitive) {
        case BuiltInType::String:
            return ParseString(type, text);
        case BuiltInType::Boolean:
            return ParseBoolean(text, value.truth);
        case BuiltInType::Decimal:
            return type == BuiltInType::Decimal ? ParseDecimal(text, value.decimal)
                                                : ParseInteger(text, value.decimal);
        case BuiltInType::Float:
            return ParseDouble(text, true, value.isFormOnly ? nullptr : &value.number);
        case BuiltInType::Double:
            return ParseDouble(text, false, value.isFormOnly ? nullptr : &value.number);
        case BuiltInType::Duration:
            return ParseDuration(text, value.duration);
        case BuiltInType::HexBinary:
            return ParseHexBinary(text, value.octets);
        case BuiltInType::Base64Binary:
            return ParseBase64(text, value.octets);
        case BuiltInType::AnyURI:
            return IsAnyUri(text);
        case BuiltInType::QName:
        case BuiltInType::Notation:
            return ParseQName(text, scope, value);
        case BuiltInType::AnySimpleType:
            return true;
        default:
            return ParseTime(primitive, text, value.time);
    }
}

Order Compare(const CParsedValue& a, const CParsedValue& b) noexcept {
    switch (a.primitive) {
        case BuiltInType::Decimal:
            return Compare(a.decimal, b.decimal);
        case BuiltInType::Float:
        case BuiltInType::Double:
            return CompareDoubles(a.number, b.number);
        case BuiltInType::Duration:
            return Compare(a.duration, b.duration);
        case BuiltInType::DateTime:
        case BuiltInType::Time:
        case BuiltInType::Date:
        case BuiltInType::GYearMonth:
        case BuiltInType::GYear:
        case BuiltInType::GMonthDay:
        case BuiltInType::GDay:
        case BuiltInType::GMonth:
            return Compare(a.time, b.time);
        default:
            return a.text == b.text ? Order::Equal : Order::Unordered;
    }
}

void AppendKey(const CParsedValue& value, std::string& key) {
    key += static_cast<char>('A' + static_cast<int>(value.primitive));
    switch (value.primitive) {
        case BuiltInType::Boolean:
            key += value.truth ? '1' : '0';
            break;
        case BuiltInType::Decimal:
            if (value.decimal.isNegative) key += '-';
            key += value.decimal.whole;
            key += '.';
            key += value.decimal.fraction;
            break;
        case BuiltInType::Float:
        case BuiltInType::Double: {
            char buffer[40];
            const double number = value.number == 0 ? 0.0 : value.number;
            const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
            key += std::isnan(number)
                       ? std::string_view("NaN")
                       : std::string_view(buffer, static_cast<std::size_t>(result.ptr - buffer));
            break;
        }
        case BuiltInType::Duration:
            if (value.duration.isNegative) key += '-';
            AppendNumber(key, value.duration.months);
            key += '/';
            AppendNumber(key, value.duration.seconds);
            key += '.';
            key += value.duration.fraction;
            break;
        case BuiltInType::HexBinary:
            AppendUpperHex(key, value.text);
            break;
        case BuiltInType::Base64Binary:
            for (const char c : value.text) {
                if (c != ' ') key += c;
            }
            break;
        case BuiltInType::QName:
        case BuiltInType::Notation:
            key += '{';
            key += value.namespaceUri;
            key += '}';
            key += value.localName;
            break;
        case BuiltInType::String:
        case BuiltInType::AnyURI:
        case BuiltInType::AnySimpleType:
            key += value.text;
            break;
        default:
            AppendNumber(key, value.time.days);
            key += '/';
            AppendNumber(key, value.time.second);
            key += '.';
            key += value.time.fraction;
            if (value.time.hasZone) key += 'Z';
    }
}

std::size_t LengthOf(const CParsedValue& value) noexcept {
    return value.primitive == BuiltInType::HexBinary || value.primitive == BuiltInType::Base64Binary
               ? value.octets
               : CountCharacters(value.text);
}

const char* NameOf(BuiltInType type) noexcept {
    // In the order of BuiltInType.
    static constexpr const char* kNames[] = {"string",
                                             "boolean",
                                             "decimal",
                                             "float",
                                             "double",
                                             "duration",
                                             "dateTime",
                                             "time",
                                             "date",
                                             "gYearMonth",
                                             "gYear",
                                             "gMonthDay",
                                             "gDay",
                                             "gMonth",
                                             "hexBinary",
                                             "base64Binary",
                                             "anyURI",
                                             "QName",
                                             "NOTATION",
                                             "normalizedString",
                                             "token",
                                             "language",
                                             "NMTOKEN",
                                             "NMTOKENS",
                                             "Name",
                                             "NCName",
                                             "ID",
                                             "IDREF",
                                             "IDREFS",
                                             "ENTITY",
                                             "ENTITIES",
                                             "integer",
                                             "nonPositiveInteger",
                                             "negativeInteger",
                                             "long",
                                             "int",
                                             "short",
                                             "byte",
                                             "nonNegativeInteger",
                                             "unsignedLong",
                                             "unsignedInt",
                                             "unsignedShort",
                                             "unsignedByte",
                                             "positiveInteger",
                                             "anySimpleType"};
    static_assert(sizeof kNames / sizeof *kNames == kBuiltInTypeCount);
    return kNames[static_cast<std::size_t>(type)];
}

}  // namespace KvXmlLib16::internal
