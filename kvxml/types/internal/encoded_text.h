/// Buffers made of text in the encodings that output can have.
#pragma once

#include <string_view>

#include "kvxml/types/binary_data.h"

namespace KvXmlLib16::internal {

/// The text in UTF-8.
CBinaryData Utf8FromWide(std::wstring_view text);
/// Text of the local code page in UTF-16, little-endian, without byte-order mark.
CBinaryData Utf16LeFromLocal(std::string_view text);

}  // namespace KvXmlLib16::internal
