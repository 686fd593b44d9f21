/// One atomic value as it was read: its parts as views, for comparing, and its key.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/schema/datatypes/internal/lexical.h"
#include "kvxml/schema/datatypes/internal/simple_type_checker.h"

namespace KvXmlLib16::internal {

/// What of it is filled depends on the primitive type.
struct CParsedValue {
    BuiltInType primitive = BuiltInType::String;
    std::string_view text;          ///< after whitespace was treated
    CDecimalView decimal;           ///< decimal
    double number = 0;              ///< float, double
    CTimeView time;                 ///< dates and times
    CDurationView duration;         ///< duration
    std::size_t octets = 0;         ///< hexBinary, base64Binary
    bool truth = false;             ///< boolean
    std::string_view namespaceUri;  ///< QName, NOTATION, when there was a scope
    std::string_view localName;     ///< QName, NOTATION
    bool isFormOnly = false;        ///< set before reading: nobody asks for `number`
};

/// Reads `text` by the lexical rules of the built-in type `type`, derived from `primitive`; bounds are facets
/// and not looked at. Prefixes are resolved when `scope` is not null.
bool ParseValue(BuiltInType type, BuiltInType primitive, std::string_view text, const IPrefixScope* scope,
                CParsedValue& value);

/// Values of one primitive type with an order; others are Equal or Unordered.
Order Compare(const CParsedValue& a, const CParsedValue& b) noexcept;

/// Appends a text that is the same for equal values of one primitive type, and different for all others. It
/// holds no control character below U+0009.
void AppendKey(const CParsedValue& value, std::string& key);

/// What `length` counts: characters or octets.
std::size_t LengthOf(const CParsedValue& value) noexcept;

/// The name in the recommendation, "dateTime".
const char* NameOf(BuiltInType type) noexcept;

}  // namespace KvXmlLib16::internal
