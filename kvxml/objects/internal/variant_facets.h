/// Checks the value that a variant holds against facets.
#pragma once

#include <string_view>

#include "kvxml/objects/variant.h"
#include "kvxml/types/primitive_restrictions.h"

namespace KvXmlLib16::internal {

/// CKvInvalidValueException, naming the element or attribute `name`, the value and the facet, when the value
/// violates one. A nil or unset value passes. Patterns are matched against `lexical`, the text that the value
/// was read from or will be written as.
void CheckFacets(const CPrimitiveRestrictions& restrictions, std::string_view name, const KvVariant& value,
                 std::string_view lexical);

}  // namespace KvXmlLib16::internal
