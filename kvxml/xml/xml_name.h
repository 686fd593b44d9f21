/// Names of a document's elements and attributes, kept once per document.
#pragma once

#include <cstdint>
#include <string>

namespace KvXmlLib16::internal {

/// One distinct name. Within a document, equal names are the same object.
struct CXmlName {
    std::string uri;    ///< namespace URI, empty for none
    std::string local;  ///< local name

    // What the reader of generated classes found out about the name last: a key that stands for class, kind
    // of record and way of matching, and the record's index. 0: nothing yet.
    mutable std::uint64_t cacheKey = 0;
    mutable std::uint32_t cacheValue = 0;
};

}  // namespace KvXmlLib16::internal
