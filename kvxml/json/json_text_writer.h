/// Writes JSON text.
///
///     CTextStream stream(XmlEncoding_UTF8);
///     CJsonTextWriter writer(&stream);
///     writer.BeginOutput();
///     writer.WriteStartElement("gpx", "");
///     ...
///     writer.EndDocument();
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/settings/eol_type.h"
#include "kvxml/settings/json_context.h"
#include "kvxml/types/item_type.h"
#include "kvxml/xml/line_layout.h"
#include "kvxml/xml/text_stream.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

namespace internal {
class CPreparedNames;
struct CPreparedName;
}  // namespace internal

/// The JSON form of the writer. Settings are made before `BeginOutput`.
///
/// The document is one object around the member that is the document element. An element is the member of
/// its name: an object when it has attributes or children, its text as a plain value when it has nothing
/// else, an empty object when it has nothing at all, and null when that is nil. Text beside other members is
/// the member "#text"; the items of a collection are an array. `docs/json.md` tells the mapping and what each
/// round-trip mode keeps.
///
/// Text is written as it is between quotation marks unless strings are escaped: then every document is
/// valid JSON, whatever the values are. An element, attribute or type whose namespace has no prefix in scope
/// throws CKvException "Unknown Namespace: %s." in the mode that keeps namespaces; only the document element
/// gets a prefix invented.
class KVXML_EXPORT CJsonTextWriter : public CXmlWriter {
public:
    /// `stream` must outlive the writer.
    explicit CJsonTextWriter(CTextStream* stream);
    ~CJsonTextWriter() override;

    // --- settings --------------------------------------------------------------------------------------
    /// What of names and namespaces is kept; JsonRoundTrip_Full unless set.
    void SetSupportRoundtrip(JsonRoundTrip value) noexcept {
        m_roundTrip = value;
        ForgetNames();
        SetDeclaresByAttribute(value == JsonRoundTrip_Full);
    }
    /// Whether strings are escaped as RFC 8259 has it; not unless set.
    void SetEscapeStrings(bool escape);
    /// Line ends; LF unless set. CKvException "Invalid EOL type." for anything that is no `EOLType`.
    void SetEOL(EOLType eol) {
        m_layout.SetEOL(eol);
        ForgetNames();
    }
    /// Indentation of one level; a tab unless set. Where strings are escaped, characters other than blanks
    /// and tabs are left out of it.
    void SetIndentChars(std::string_view indentChars);
    /// Each member and item on a line of its own (the default), or all on one line.
    void SetFormatted(bool formatted) noexcept {
        m_formatted = formatted;
        ForgetNames();
    }

    /// Deepest level of objects and arrays that has its own indentation; what is further inside is indented
    /// as far. No limit unless set.
    void SetMaxIndentedDepth(std::uint32_t depth) {
        m_layout.SetMaxIndentedDepth(depth);
        ForgetNames();
    }

    JsonRoundTrip GetSupportRoundtrip() const noexcept { return m_roundTrip; }
    bool GetEscapeStrings() const noexcept { return m_escapeStrings; }
    EOLType GetEOL() const noexcept { return m_layout.GetEOL(); }
    const std::string& GetIndentChars() const noexcept { return m_layout.GetIndentChars(); }
    bool GetFormatted() const noexcept { return m_formatted; }
    CTextStream* GetStream() const noexcept { return m_stream; }

    // --- output ----------------------------------------------------------------------------------------
    /// Begins the stream and the object around the document element.
    void BeginOutput() override;
    /// Ends the object and the stream, then checks that every element was closed.
    void EndDocument() override;
    /// Writes a comment; nothing where strings are escaped, as JSON has none. "*/" is kept apart by a blank.
    void WriteComment(std::string_view text) override;
    /// Does nothing: JSON has no place for it.
    void WriteRaw(std::string_view text) override;
    /// Does nothing: JSON has no place for it.
    void WriteRawAfterSpace(std::string_view text) override;
    void WriteStartElement(std::string_view localName, std::string_view namespaceUri) override;
    /// Default values are written like others; empty text of a kind without quotation marks is not. Texts of
    /// one element that follow each other are one value, a string where their types differ.
    void WriteText(std::string_view text, ItemType type, bool isDefaultValue) override;
    void WriteEndElement() override;
    void WriteAttribute(std::string_view localName, std::string_view namespaceUri, std::string_view value,
                        ItemType type) override;
    /// Writes the attribute in the mode that keeps namespaces, nothing in others.
    void WriteTypeAttribute(std::string_view typeNamespaceUri, std::string_view typeName,
                            ItemType type) override;
    /// Writes nothing itself; an element that is nil and has no attributes is written as null.
    void WriteNilAttribute() override;
    void WriteSimpleAttribute(const SimpleName& name, std::string_view value, bool isCanonical) override;
    void WriteSimpleElement(const SimpleName& name, std::string_view text, bool isDefaultValue,
                            bool isCanonical) override;

private:
    /// The most that is put around a name: marks, brackets and line ends.
    static constexpr std::size_t kFrame = 32;

    CStringBuffer& Buffer() noexcept { return m_stream->GetBuffer(); }
    void FlushIfFull() {
        if (m_needsFlush && m_stream->GetBufferedLength() >= CTextStream::kFlushLength) m_stream->Flush();
    }
    CXmlWriterContext& RequireElement() const;
    static bool IsItem(const CXmlWriterContext& context, std::string_view qualifier,
                       std::string_view localName) noexcept;
    std::string_view ElementQualifier(const NamespaceScope& scope, std::string_view uri) const;
    std::string_view AttributeQualifier(const NamespaceScope& scope, std::string_view uri) const;
    std::string_view AttributeMark() const noexcept;
    static std::string_view QualifierOf(const NamespaceScope& scope, std::string_view uri);
    char* PutNewLine(char* out, std::size_t indentation) const noexcept;
    std::size_t LineIndentation(std::size_t level);
    void CloseArray(CXmlWriterContext& context);
    void StartDocumentElement(std::string_view localName, std::string_view namespaceUri);
    void AppendLineAndName(char separator, std::string_view mark, std::string_view qualifier,
                           std::string_view localName);
    void AppendMember(CXmlWriterContext& context, std::string_view mark, std::string_view qualifier,
                      std::string_view localName);
    void AppendDeclarations(CXmlWriterContext& context, std::string_view invented);
    void AppendDeclaration(CXmlWriterContext& context, std::string_view prefix, std::string_view uri);
    void AppendHeldText(CXmlWriterContext& context);
    const internal::CPreparedName* FindPrepared(const SimpleName& name, const CXmlWriterContext& context);
    const internal::CPreparedName* Prepare(const SimpleName& name, std::string_view mark,
                                           std::string_view qualifier);
    void AppendValue(char* out, std::string_view text, ItemType type, bool isCanonical);
    void AppendPrepared(CXmlWriterContext& context, const internal::CPreparedName& prepared,
                        std::string_view text, ItemType type, bool isCanonical);
    char* PutName(char* out, std::string_view mark, std::string_view qualifier,
                  std::string_view localName) const noexcept;
    void AppendName(std::string_view mark, std::string_view qualifier, std::string_view localName);
    void AppendValue(std::string_view text, ItemType type);
    char* PutValue(char* out, std::string_view text, ItemType type, bool isCanonical) const noexcept;
    void AppendLongValue(std::string_view text, ItemType type);
    void AppendEscaped(std::string_view text);
    template <class Rules>
    void AppendTransformed(std::string_view text);
    void AppendAsAscii(std::string_view text);

    CTextStream* m_stream;
    JsonRoundTrip m_roundTrip = JsonRoundTrip_Full;
    bool m_needsFlush;
    bool m_formatted = true;
    bool m_escapeStrings = false;
    bool m_escapesAsAscii;     // escaped strings need more than the bytes of the text
    bool m_hasMember = false;  // the outermost object has one
    bool m_hasText = false;    // m_text is the current element's and still to be written
    bool m_isNil = false;      // of the element opened last
    ItemType m_textType = ItemType_Unknown;
    std::size_t m_level = 0;  // of indentation, of what is written into the current element
    std::string m_text;       // more room than the text has
    std::size_t m_textLength = 0;
    internal::CLineLayout m_layout;
    std::unique_ptr<internal::CPreparedNames> m_preparedNames;  // made when the first one is
};

}  // namespace KvXmlLib16
