/// Names of the nodes of a document, kept once per distinct name.
#pragma once

#include <cstdint>
#include <string>

#include "kvxml/base/internal/document_name.h"
#include "kvxml/base/shared_name.h"

namespace KvXmlLib16::internal {

class CXmlTree;

/// A namespace of one document, kept once for all names that are in it. Equal ones are one object; lives as
/// long as the tree.
struct CXmlNamespace {
    std::string raw;  ///< the URI as parsers give it, in UTF-8
    std::string uri;  ///< the same in the local code page; empty for no namespace
    std::size_t hash = 0;

    /// The URI as objects keep it, and the prefix that the document had for it when one was first asked for:
    /// see `ResolveName`.
    mutable CSharedName shared;
    mutable CSharedName prefix;
    mutable bool isResolved = false;
};

/// Namespace URI and local name of elements and attributes. Within one document equal names are one object,
/// so names are compared by their pointers. Lives as long as the tree.
struct CXmlName {
    explicit CXmlName(const CXmlNamespace& in) noexcept : space(in), uri(in.uri) {}

    const CXmlNamespace& space;
    const std::string& uri;  ///< of the namespace
    std::string local;       ///< with prefix and colon when the document was read without namespaces
    CXmlTree* tree = nullptr;
    bool isNamespaceAttribute = false;
    bool isNilAttribute = false;

    /// What the binder found out about this name last: of the tree it is only storage.
    mutable std::uint64_t cacheKey = 0;
    mutable std::uint32_t cacheValue = 0;
    /// The local name as objects keep it; empty until one asks.
    mutable CSharedName shared;
    /// Likewise the namespace and its prefix; see `ResolveName`.
    mutable CSharedName sharedUri;
    mutable CSharedName sharedPrefix;
    mutable bool isResolved = false;
    mutable bool isSpaceAttribute = false;  ///< xml:space; known when resolved
    /// As judges get it.
    CDocumentName judged;
};

}  // namespace KvXmlLib16::internal
