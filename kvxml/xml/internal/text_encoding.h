/// From collected text to bytes of an output encoding.
#pragma once

#include <cstddef>
#include <string_view>

#include "kvxml/settings/xml_encoding.h"

namespace KvXmlLib16::internal {

/// The byte-order mark of UTF-16 files.
inline constexpr std::string_view kUtf16Mark = "\xFF\xFE";

inline bool IsUtf16(XmlEncoding encoding) noexcept {
    return encoding == XmlEncoding_UTF16 || encoding == XmlEncoding_UTF16NoDeclaration;
}

/// Throws CKvException for a value that bytes can not be written in.
void CheckEncoding(XmlEncoding encoding);

/// Number of bytes at the end of `utf8` that begin a character but do not complete it.
std::size_t UnfinishedLength(std::string_view utf8) noexcept;

}  // namespace KvXmlLib16::internal
