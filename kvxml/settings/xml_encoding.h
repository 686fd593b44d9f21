/// The character encodings in which documents are written.
#pragma once

#include <cstdint>

namespace KvXmlLib16 {

/// Encoding of written bytes and what the XML declaration says about it. Files in UTF-16 begin with the
/// byte-order mark FF FE; streams carry none.
enum XmlEncoding : std::int32_t {
    XmlEncoding_None = 0,                ///< not an encoding of bytes: for text that stays text
    XmlEncoding_UTF8 = 1,                ///< UTF-8, declared
    XmlEncoding_UTF16 = 2,               ///< UTF-16 little-endian, declared
    XmlEncoding_UTF16NoDeclaration = 3,  ///< UTF-16 little-endian, no encoding in the declaration
};

}  // namespace KvXmlLib16
