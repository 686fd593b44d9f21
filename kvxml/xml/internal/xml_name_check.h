/// What a name may look like.
#pragma once

#include <string_view>

#include "kvxml/export.h"

namespace KvXmlLib16::internal {

/// Whether the text, in the local code page, is a name as XML 1.0 (fifth edition) has it; without
/// `allowColon`, one that Namespaces in XML accepts as local name or prefix. Where the code page is not
/// UTF-8, every byte above 127 counts as a letter.
KVXML_EXPORT bool IsXmlName(std::string_view text, bool allowColon) noexcept;

}  // namespace KvXmlLib16::internal
