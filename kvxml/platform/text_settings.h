/// Process-wide switches, meant to be set once at start-up, before documents are read or written.
///
/// Setting one while another thread reads or writes is no data race, but that thread may follow the old
/// value for the rest of its document.
#pragma once

#include "kvxml/export.h"

namespace KvXmlLib16 {

/// When on, text passes between documents, the library and the caller as raw bytes, without conversion
/// between UTF-8 and the local code page. Default off.
KVXML_EXPORT void ASCIIOnly(bool value);

/// Sets the local code page: what the bytes of narrow strings mean that the caller and the library exchange.
///
/// `codePage` is a Windows code page number. The default 3, and 0, mean the code set of the calling thread's
/// locale, where the C locale counts as UTF-8; 65001 is UTF-8; others such as 1252, 28591 or 932 need a
/// converter on the host. A number without one is accepted here; conversions then throw CKvException.
KVXML_EXPORT void SetLocalCharEncoding(unsigned int codePage);

/// When on, `FromXmlFile` parses the file in chunks while the next one is being read. Default off: the file
/// is read whole.
KVXML_EXPORT void AsyncFromXmlFile(bool value);

/// When on, `ToXmlFile` and `ToJsonFile` without compression write to the file while the document is
/// produced. Default off: the document is built in memory first.
KVXML_EXPORT void AsyncToXmlFile(bool value);

}  // namespace KvXmlLib16
