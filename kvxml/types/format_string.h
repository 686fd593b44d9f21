/// printf-style formatting into a string, the formatter behind every message of the library.
#pragma once

#include <string>

#include "kvxml/export.h"

namespace KvXmlLib16 {

/// Formats like `printf` into a new string, without any limit of length and whatever the C locale is.
///
/// Beyond the host's own printf it accepts the size prefix `I64` for 64-bit integers (as `ll`), prints a
/// null string as "(null)", and converts wide strings (`%S`, `%ls`) to the local code page.
KVXML_EXPORT std::string FormatString(const char* format, ...);

}  // namespace KvXmlLib16
