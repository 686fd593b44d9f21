/// Recognises Fast Infoset documents (ITU-T X.891).
#pragma once

#include <cstddef>

namespace KvXmlLib16 {

class CXmlDocument;

namespace internal {

/// Reads the bytes into the document if they are a Fast Infoset document; false, with nothing done, if they
/// are something else. The format is not built in yet: such a document is a CKvException.
bool TryParseFastInfoset(CXmlDocument& document, const unsigned char* data, std::size_t length);

}  // namespace internal
}  // namespace KvXmlLib16
