/// Writes XML text.
///
///     CTextStream stream(XmlEncoding_UTF8);
///     CXmlTextWriter writer(&stream);
///     writer.BeginOutput();
///     writer.WriteDeclaration();
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
#include "kvxml/types/item_type.h"
#include "kvxml/xml/line_layout.h"
#include "kvxml/xml/text_stream.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

namespace internal {
class CPreparedNames;
struct CPreparedName;
}  // namespace internal

/// The XML form of the writer. Settings are made before the first element.
///
/// Names are written as given. Text and attribute values are escaped; a character that XML 1.0 cannot
/// represent (a control character other than tab, line feed and carriage return) throws
/// CKvInvalidValueException. Carriage returns are dropped, line feeds in text become the line end;
/// `SetLossless` keeps what readers would otherwise not get back.
/// Misuse throws CKvException; what was written until then stays in the stream.
class KVXML_EXPORT CXmlTextWriter : public CXmlWriter {
public:
    /// `stream` must outlive the writer.
    explicit CXmlTextWriter(CTextStream* stream, bool writeDefaultValues = false);
    ~CXmlTextWriter() override;

    // --- settings --------------------------------------------------------------------------------------
    /// Line ends; LF unless set. CKvException "Invalid EOL type." for anything that is no `EOLType`.
    void SetEOL(EOLType eol) {
        m_layout.SetEOL(eol);
        ForgetNames();
    }
    /// Indentation of one level; a tab unless set.
    void SetIndentChars(std::string_view indentChars) {
        m_layout.SetIndentChars(indentChars);
        ForgetNames();
    }
    /// Each element on a line of its own, indented by its depth (the default), or all on one line.
    void SetFormatted(bool formatted) noexcept {
        m_formatted = formatted;
        ForgetNames();
    }
    /// Deepest level that has its own indentation; what is further inside is indented as far. No limit unless
    /// set.
    void SetMaxIndentedDepth(std::uint32_t depth) {
        m_layout.SetMaxIndentedDepth(depth);
        ForgetNames();
    }
    /// Whether readers get back what was written, whatever it is: a text that begins with "<![CDATA[" is
    /// escaped as any other, carriage returns and, in attribute values, tabs are written as references. Not
    /// unless set.
    void SetLossless(bool lossless) noexcept { m_lossless = lossless; }
    /// Whether texts that are default values are written; not unless set.
    void SetWriteDefaultValues(bool write) noexcept { m_writeDefaultValues = write; }

    EOLType GetEOL() const noexcept { return m_layout.GetEOL(); }
    const std::string& GetIndentChars() const noexcept { return m_layout.GetIndentChars(); }
    bool GetFormatted() const noexcept { return m_formatted; }
    bool GetLossless() const noexcept { return m_lossless; }
    bool GetWriteDefaultValues() const noexcept { return m_writeDefaultValues; }
    CTextStream* GetStream() const noexcept { return m_stream; }

    // --- output ----------------------------------------------------------------------------------------
    /// Writes the XML declaration; it names the encoding of the stream.
    void WriteDeclaration();

    /// Begins the stream.
    void BeginOutput() override;
    /// Ends the stream, then checks that every element was closed.
    void EndDocument() override;
    /// Writes a comment line between elements. Characters are escaped as in text; "--" is kept apart by a
    /// blank.
    void WriteComment(std::string_view text) override;
    void WriteRaw(std::string_view text) override;
    void WriteRawAfterSpace(std::string_view text) override;
    void WriteRawContent(std::string_view text, bool onOwnLines) override;
    void WriteStartElement(std::string_view localName, std::string_view namespaceUri) override;
    /// Empty text writes nothing. CDATA sections at the beginning of the text are written as they are, unless
    /// the writer is lossless.
    void WriteText(std::string_view text, ItemType type, bool isDefaultValue) override;
    void WriteEndElement() override;
    void WriteAttribute(std::string_view localName, std::string_view namespaceUri, std::string_view value,
                        ItemType type) override;
    void WriteTypeAttribute(std::string_view typeNamespaceUri, std::string_view typeName,
                            ItemType type) override;
    void WriteNilAttribute() override;
    void WriteSimpleAttribute(const SimpleName& name, std::string_view value, bool isCanonical) override;
    void WriteSimpleElement(const SimpleName& name, std::string_view text, bool isDefaultValue,
                            bool isCanonical) override;

private:
    CStringBuffer& Buffer() noexcept { return m_stream->GetBuffer(); }
    void FlushIfFull() {
        if (m_needsFlush && m_stream->GetBufferedLength() >= CTextStream::kFlushLength) m_stream->Flush();
    }
    /// Length of the element's indentation.
    inline std::size_t IndentationOf(const CXmlWriterContext& context);
    const internal::CPreparedName* PrepareName(const SimpleName& name);
    const internal::CPreparedName* PrepareAttribute(const SimpleName& name);
    void RequireOpenStartTag() const;
    [[noreturn]] static void ThrowNoElement();
    void AppendNamespace(std::string_view prefix, std::string_view uri);
    void AppendDocumentNamespaces(std::string_view declared);
    /// Appends `lead`, which is short and needs no escaping, and the escaped text.
    template <bool kAttribute>
    void AppendEscaped(std::string_view lead, std::string_view text);
    template <bool kAttribute>
    void AppendEscapedInPieces(std::string_view text);
    template <bool kAttribute>
    char* PutEscaped(char* out, std::string_view rest) const;
    void AppendWithSections(std::string_view text);

    CTextStream* m_stream;
    bool m_needsFlush;
    bool m_formatted = true;
    bool m_writeDefaultValues;
    bool m_lossless = false;
    bool m_isUtf8;
    internal::CLineLayout m_layout;
    std::unique_ptr<internal::CPreparedNames> m_preparedNames;  // made when the first one is
};

}  // namespace KvXmlLib16
