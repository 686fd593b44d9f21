/// XML document in memory, as every reader of the library walks it.
///
///     CXmlDocument document;
///     document.Load("track.gpx");
///     const CXmlElement* root = document.GetDocumentElement();
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "kvxml/base/text_argument.h"
#include "kvxml/export.h"
#include "kvxml/settings/serialization_context.h"

namespace KvXmlLib16 {

class CBinaryData;
class CDocumentJudge;
class CReadingPlaces;
class CXmlElement;
class CXmlReader;

namespace internal {
class CFile;
class CXmlTree;
}  // namespace internal

/// A parsed document: its elements and its table of namespace prefixes.
///
/// A document can be loaded repeatedly; each load first drops what was there. When a load fails with a
/// CKvException about the document's text ("%s at line %d", or "Failed to parse FastInfoset. %s at octet
/// %llu"), what was read up to there stays until the next load; a file read in chunks leaves nothing.
/// Documents own their elements and can be moved, not copied.
///
/// A document check of the context judges what is loaded, and its CKvSchemaValidationException leaves the
/// load. What is beyond a limit of the context is refused (docs/limits.md), and external entities are not
/// read. One thread at a time uses a document, its elements included.
class KVXML_EXPORT CXmlDocument {
public:
    /// Called for each element at its end tag; true discards the element with all it contains, and gives its
    /// memory back at once. It must not load or clean up the document. What it throws leaves the load. The
    /// document element is never discarded.
    using ElementFilter = bool (*)(CXmlElement*);

    CXmlDocument();
    /// The context is not copied and must outlive the document; its schema type is read now. Without one,
    /// `CSerializationContext::GetDefaultContext` is used.
    explicit CXmlDocument(const CSerializationContext& context);
    /// A null filter keeps all elements.
    explicit CXmlDocument(ElementFilter filter);
    CXmlDocument(ElementFilter filter, const CSerializationContext& context);
    /// A context that will not outlive the call is copied.
    explicit CXmlDocument(const CSerializationContext&& context);
    CXmlDocument(ElementFilter filter, const CSerializationContext&& context);
    CXmlDocument(const CXmlDocument&) = delete;
    CXmlDocument& operator=(const CXmlDocument&) = delete;
    /// Elements keep their addresses. The document that was moved from is empty and can be loaded.
    CXmlDocument(CXmlDocument&& other) noexcept;
    CXmlDocument& operator=(CXmlDocument&& other) noexcept;
    virtual ~CXmlDocument();

    /// Reads a file of XML or Fast Infoset, which may be compressed (gzip or zlib). With
    /// `AsyncFromXmlFile(true)` it is parsed in chunks of 131,072 bytes; then it must be XML, not be
    /// compressed, nor be in an encoding that only whole texts can be converted from (GB18030, ISO-2022-JP).
    /// CKvException with the file's name and the host's error number when it cannot be read.
    void Load(const char* fileName);
    /// Reads XML or Fast Infoset, which may be compressed, from memory; the bytes are needed during the call
    /// only. No bytes: CKvException "XML Stream is empty!".
    void LoadXmlStream(const unsigned char* data, std::size_t length);
    /// Reads a document as it stands, in the encoding that it declares. An empty text: CKvException "XML
    /// String is empty!".
    void LoadXml(const char* xml);
    /// The encoding that the text declares does not count.
    void LoadXml(const wchar_t* xml);
    /// As from zero-terminated text, for `std::string`, `std::string_view` and what converts to a view; a
    /// zero byte is a part of the text. So for BuildFromJson.
    template <class Text, internal::IfTextView<Text> = 0>
    void LoadXml(const Text& xml) {
        LoadXmlText(xml);
    }

    /// Convert JSON text into XML text in UTF-8, which is returned and not loaded; the elements that were
    /// loaded before are dropped. The context's `GetJsonContext` tells how; docs/json.md has the rules.
    ///
    /// Files and bytes are UTF-8 or UTF-16, with or without byte-order mark, and may be compressed; text is
    /// in the local code page. CKvException "JSON Stream is empty!" or "JSON String is empty!" when there is
    /// nothing, CKvValidationException with line, position and path when it is no JSON, and with the path
    /// ("$.orders.order[3]") when it fits no XML document.
    CBinaryData LoadJsonFile(const char* fileName);
    CBinaryData LoadJsonStream(const unsigned char* data, std::size_t length);
    CBinaryData LoadJson(const char* json);
    CBinaryData LoadJson(const wchar_t* json);

    /// As LoadJson..., but the elements are loaded, without XML text in between.
    void BuildFromJsonFile(const char* fileName);
    void BuildFromJsonStream(const unsigned char* data, std::size_t length);
    void BuildFromJson(const char* json);
    void BuildFromJson(const wchar_t* json);
    template <class Text, internal::IfTextView<Text> = 0>
    void BuildFromJson(const Text& json) {
        BuildFromJsonText(json);
    }

    /// Null when nothing was loaded.
    CXmlElement* GetDocumentElement() noexcept;
    const CXmlElement* GetDocumentElement() const noexcept;

    /// The namespace that the prefix stands for, empty for an unknown prefix. One table serves the whole
    /// document, and the last declaration of a prefix counts; the default namespace has the empty prefix.
    std::string LookupNamespaceFromAlias(const char* prefix) const;
    /// The first prefix, in ascending byte order, that stands for exactly this namespace. Empty for the
    /// default namespace, and when there is none.
    std::string LookupAliasFromNamespace(const char* uri) const;

protected:
    /// Drops the elements and the table of prefixes. Every load begins with it.
    virtual void Cleanup();

private:
    friend class CXmlReader;

    /// What is known about the encoding of the text that is to be parsed.
    enum class Encoding { Declared, Utf8 };

    struct CReading;

    void LoadXmlText(std::string_view xml);
    void BuildFromJsonText(std::string_view json);
    void BuildTree(std::string_view json);

    std::unique_ptr<CDocumentJudge> BeginJudging(const CReadingPlaces* places, bool isJson) const;
    internal::CXmlTree& Tree();
    void Parse(const unsigned char* data, std::size_t length);
    bool TryParseFastInfoset(const unsigned char* data, std::size_t length);
    void ParseText(const unsigned char* data, std::size_t length, Encoding encoding);
    void ParseConverted(const std::string& utf8);
    void LoadWhole(const char* fileName);
    void LoadLarge(internal::CFile& file, const char* fileName, std::uint64_t size);
    void LoadInChunks(const char* fileName);

    std::unique_ptr<internal::CXmlTree> m_tree;
    ElementFilter m_filter = nullptr;
    std::shared_ptr<const CSerializationContext> m_ownContext;  // null: somebody else's is used
    const CSerializationContext* m_context;
    SchemaType m_schemaType;
};

}  // namespace KvXmlLib16
