/// The line ends of written documents.
#pragma once

#include <cstdint>

namespace KvXmlLib16 {

/// How lines end in written text.
enum EOLType : std::int32_t {
    EOLType_CRLF = 0,  ///< carriage return and line feed
    EOLType_LF = 1,    ///< line feed
};

}  // namespace KvXmlLib16
