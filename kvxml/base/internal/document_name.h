/// A name of a document, as those who judge documents get it.
#pragma once

#include <cstdint>
#include <string_view>

namespace KvXmlLib16::internal {

/// Kept once for each distinct name of a document, so that what was found out about it can stay with it.
/// Texts are UTF-8.
struct CDocumentName {
    std::string_view namespaceUri;
    std::string_view localName;
    std::string_view prefix;  ///< empty where the document keeps none with its names
    /// For the judge, which puts a mark of its own into it; 0 at first.
    mutable std::uint64_t note = 0;
};

/// An attribute of an element that begins. The value is good during the call that hands it over.
struct CDocumentAttribute {
    const CDocumentName* name;
    std::string_view value;
};

}  // namespace KvXmlLib16::internal
