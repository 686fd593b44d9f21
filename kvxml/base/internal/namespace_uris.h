/// The namespaces that XML itself and XML Schema reserve.
#pragma once

#include <string_view>

namespace KvXmlLib16::internal {

/// Of the prefix `xml` (Namespaces in XML 1.0, 3).
inline constexpr std::string_view kXmlNamespace = "http://www.w3.org/XML/1998/namespace";
/// Of the prefix `xmlns`, to which namespace declarations belong (Namespaces in XML 1.0, 3).
inline constexpr std::string_view kXmlnsNamespace = "http://www.w3.org/2000/xmlns/";
/// Of `xsi:type`, `xsi:nil` and the schema locations (XML Schema Part 1, 2.6).
inline constexpr std::string_view kInstanceNamespace = "http://www.w3.org/2001/XMLSchema-instance";
/// Of schema documents (XML Schema Part 1, 2.6).
inline constexpr std::string_view kSchemaNamespace = "http://www.w3.org/2001/XMLSchema";

}  // namespace KvXmlLib16::internal
