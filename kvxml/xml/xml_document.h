/// The XML tree that every input is read into.
///
///     CXmlDocument document;
///     document.Load("track.gpx");
///     for (const CXmlElement* e = document.GetDocumentElement()->GetFirstElement(); e != nullptr;
///          e = e->GetNextSiblingElement()) ...
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "kvxml/export.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

class CBinaryData;
class CSerializationContext;

namespace internal {
class CXmlTree;
}

/// Owns a whole tree of elements. There are no nodes for comments, processing instructions or pieces of
/// text; prefixes are kept in one table for the document. Loading again replaces the tree; a failed load
/// throws CKvException and leaves what was built until then.
///
/// Nodes have no addresses of their own worth copying, so documents are neither copied nor moved.
class KVXML_EXPORT CXmlDocument {
public:
    /// Called with every element when its end tag is seen; true discards the element and gives its memory
    /// back. Not asked to discard the document element.
    using ElementFilter = bool (*)(CXmlElement*);

    CXmlDocument();
    /// The context is not owned and must outlive the document.
    explicit CXmlDocument(const CSerializationContext& context);
    explicit CXmlDocument(ElementFilter filter);
    CXmlDocument(ElementFilter filter, const CSerializationContext& context);
    CXmlDocument(const CXmlDocument&) = delete;
    CXmlDocument& operator=(const CXmlDocument&) = delete;
    virtual ~CXmlDocument();

    // Errors of all: "%s at line %d" for ill-formed input, and a text with the line for elements nested deeper
    // than the context allows.

    /// Reads a file: whole, inflated when it is a gzip or zlib stream; or, with `AsyncFromXmlFile(true)`, in
    /// chunks of 131,072 bytes, plain text only.
    void Load(const char* fileName);
    /// Reads bytes, inflated when they are a gzip or zlib stream. They are not needed afterwards.
    void LoadXmlStream(const unsigned char* data, std::size_t length);
    /// Reads text; its declaration tells the encoding.
    void LoadXml(const char* xml);
    /// Reads wide text; a declared encoding is ignored.
    void LoadXml(const wchar_t* xml);

    // JSON text as XML text. Not built in yet: throw CKvException, after the check for empty input.
    CBinaryData LoadJsonFile(const char* fileName);
    CBinaryData LoadJsonStream(const unsigned char* data, std::size_t length);
    CBinaryData LoadJson(const char* json);
    CBinaryData LoadJson(const wchar_t* json);

    /// Null when nothing was loaded.
    const CXmlElement* GetDocumentElement() const noexcept;
    CXmlElement* GetDocumentElement() noexcept;

    // Prefixes hold for the whole document: a later declaration of a prefix replaces an earlier one.

    /// URI of the prefix (empty: the default namespace); empty when the prefix is unknown.
    std::string LookupNamespaceFromAlias(const char* prefix) const;
    /// First prefix, in ascending order, of the URI; empty when it has none or is the default namespace.
    std::string LookupAliasFromNamespace(const char* uri) const;

protected:
    /// Drops tree and prefixes; called before every load.
    virtual void Cleanup();

private:
    friend class CXmlElement;
    friend class CXmlAttribute;

    void Parse(const unsigned char* data, std::size_t length);
    void ParseText(const unsigned char* data, std::size_t length, const char* encoding);
    void LoadWhole(const char* fileName);
    void LoadChunked(const char* fileName);

    const CSerializationContext* m_context;
    ElementFilter m_filter;
    std::unique_ptr<internal::CXmlTree> m_tree;
};

}  // namespace KvXmlLib16
