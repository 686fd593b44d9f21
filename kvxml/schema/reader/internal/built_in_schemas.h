/// Schemas that most others import, so that these need no file.
#pragma once

#include <string_view>

namespace KvXmlLib16::internal {

/// The schema document of the namespaces of `xml:`, of XLink and of the instance attributes; null data for
/// others.
std::string_view FindBuiltInSchema(std::string_view namespaceUri) noexcept;

}  // namespace KvXmlLib16::internal
