/// Streaming reader: the events of a document one after another, in constant memory.
///
///     CXmlReader reader;
///     reader.OpenFile("orders.xml");
///     while (reader.Read()) {
///         if (reader.IsStart("order")) std::cout << reader.GetLine() << ' ' << reader.GetAttribute("id") <<
///         '\n';
///     }
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kvxml/export.h"

namespace KvXmlLib16 {

class CSerializationContext;
class CXmlDocument;

namespace internal {
class CReaderEvents;
}

/// Kinds of events.
enum class XmlEvent : std::uint8_t {
    None,  ///< before the first and after the last event
    StartElement,
    EndElement,
    Text,  ///< one run of characters; neighbouring runs may come in several events
    CData,
    Comment,
    ProcessingInstruction,
    DocumentType,  ///< the declaration was read; GetLocalName is the name of the document element
};

/// An attribute of the element just started. Views are good until the next Read.
struct CXmlReaderAttribute {
    std::string_view namespaceUri;
    std::string_view localName;
    std::string_view prefix;
    std::string_view value;
    bool isDefaulted = false;  ///< not in the document: from a declaration
};

/// Pulls events from a document in XML: string, buffer, file or stream, in any encoding that the library
/// reads, plain, gzip or zlib. Texts are UTF-8 whatever the local code page is. Namespace declarations are no
/// attributes. Limits of the context hold. One thread at a time.
///
/// Not well-formed: Read throws CKvException "%s at line %llu" with what came before already delivered.
class KVXML_EXPORT CXmlReader {
public:
    CXmlReader();
    /// The context's limits are read now; it is not kept.
    explicit CXmlReader(const CSerializationContext& context);
    CXmlReader(const CXmlReader&) = delete;
    CXmlReader& operator=(const CXmlReader&) = delete;
    CXmlReader(CXmlReader&&) noexcept;
    CXmlReader& operator=(CXmlReader&&) noexcept;
    ~CXmlReader();

    // Each begins a new document; what was open before is dropped.

    /// CKvException when the file cannot be opened.
    void OpenFile(const char* fileName);
    /// The bytes must stay until the document has been read. `name` is what GetFileName returns.
    void OpenBuffer(const void* data, std::size_t length, std::string_view name = {});
    /// Text in UTF-8 or in the encoding that it declares; must stay as above.
    void OpenText(std::string_view xml, std::string_view name = {}) {
        OpenBuffer(xml.data(), xml.size(), name);
    }
    /// The stream must stay as above.
    void OpenStream(std::istream& stream, std::string_view name = {});

    /// Goes to the next event; false at the end of the document.
    bool Read();

    XmlEvent GetEvent() const noexcept;
    bool IsStart(std::string_view localName) const noexcept;
    bool IsStart(std::string_view namespaceUri, std::string_view localName) const noexcept;
    /// Of elements; the target of a processing instruction.
    std::string_view GetLocalName() const noexcept;
    std::string_view GetNamespaceUri() const noexcept;
    std::string_view GetPrefix() const noexcept;
    /// Of Text, CData, Comment; the data of a processing instruction.
    std::string_view GetText() const noexcept;

    std::size_t GetAttributeCount() const noexcept;
    const CXmlReaderAttribute& GetAttributeAt(std::size_t index) const noexcept;
    /// Null when the element has none of the name.
    const CXmlReaderAttribute* FindAttribute(std::string_view namespaceUri,
                                             std::string_view localName) const noexcept;
    /// Value of the attribute in no namespace; empty when there is none.
    std::string_view GetAttribute(std::string_view localName) const noexcept;

    /// The namespace that the prefix (empty: the default) stands for at this place; false when it is not
    /// declared. `xml` always is. Undeclared default: true with an empty namespace.
    bool LookupNamespace(std::string_view prefix, std::string_view& namespaceUri) const noexcept;
    /// A number that changes whenever the prefixes in scope do; equal numbers in one document mean equal
    /// scopes.
    std::uint64_t GetScopeNumber() const noexcept;
    /// All prefixes in scope (empty: the default namespace) with their namespaces, each prefix once.
    std::vector<std::pair<std::string_view, std::string_view>> GetScope() const;

    /// 1 for the document element and its end, one more for each level; at text that of the element that
    /// holds it.
    std::uint32_t GetDepth() const noexcept;
    /// "/orders/o:order[2]/sku": names as the document has them, with positions among siblings of the same
    /// name where not the first.
    std::string GetPath() const;
    /// Of the first character of the event. From 1; counted when asked for.
    std::uint64_t GetLine() const;
    /// In characters, from 1.
    std::uint64_t GetColumn() const;
    /// In bytes of the (inflated) input, from 0.
    std::uint64_t GetOffset() const noexcept;
    const std::string& GetFileName() const noexcept;

    /// At a start: reads on to the end of the same element, which becomes the current event.
    void SkipSubtree();
    /// At a start: reads the element with all it contains into `document`, as if it were a document of its
    /// own (prefixes in scope included); the end of the element becomes the current event.
    void ReadSubtree(CXmlDocument& document);

private:
    friend class internal::CReaderEvents;

    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace KvXmlLib16
