/// Writes Fast Infoset documents (ITU-T X.891), the binary form of XML.
///
///     CFastInfosetContext settings;
///     CFastInfosetWriter writer(settings);
///     writer.BeginOutput();
///     writer.WriteStartElement("gpx", "http://www.topografix.com/GPX/1/1");
///     ...
///     writer.EndDocument();
///     CBinaryData document = writer.TakeDocument();
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/settings/fast_infoset_context.h"
#include "kvxml/settings/fast_infoset_decl.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/types/item_type.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

/// The binary form of the writer.
///
/// Carries the same document as XML text does, without formatting; carriage returns stay. Each namespace is
/// declared where XML text declares it, and besides where an element or attribute turns out to need it.
/// Attributes called "xmlns" or "xmlns:..." in no namespace are declarations, and a prefix in a name in no
/// namespace is one that is declared.
///
/// Failures are CKvException "Failed to write FastInfoset." followed by what failed: a name that is none, a
/// character that XML does not have, a prefix that is not declared, an attribute written twice. Only misuse
/// that text writers report too has their messages. After a failure nothing is of use but `BeginOutput`.
class KVXML_EXPORT CFastInfosetWriter : public CXmlWriter {
public:
    /// `settings` are copied. CKvException for a declaration that does not exist.
    explicit CFastInfosetWriter(const CFastInfosetContext& settings, FInfoDecl decl = FInfoDecl_None,
                                bool writeDefaultValues = false);
    ~CFastInfosetWriter() override;

    /// Whether a text that begins with "<![CDATA[" is written as the text that it is; otherwise what stands
    /// between the marks becomes a CDATA section, as it does unless set.
    void SetLossless(bool lossless) noexcept { m_lossless = lossless; }

    /// Discards what was written and starts the document.
    void BeginOutput() override;
    /// Checks that every element was closed, and that there was one.
    void EndDocument() override;
    /// The finished document, once.
    CBinaryData TakeDocument();

    void SetDefaultNamespace(std::string_view uri) override;
    void AddNamespaceAlias(std::string_view prefix, std::string_view uri) override;
    /// "--" is kept apart by a blank, so that the comment can become XML text.
    void WriteComment(std::string_view text) override;
    /// Writes processing instructions and comments with blanks between them; refuses anything else.
    void WriteRaw(std::string_view text) override;
    /// Likewise; one XML element is taken as well and written as what it is.
    void WriteRawAfterSpace(std::string_view text) override;
    void WriteStartElement(std::string_view localName, std::string_view namespaceUri) override;
    /// Empty text writes nothing. CDATA sections are kept as such where the text begins with one, unless
    /// the writer is lossless.
    void WriteText(std::string_view text, ItemType type, bool isDefaultValue) override;
    void WriteEndElement() override;
    void WriteAttribute(std::string_view localName, std::string_view namespaceUri, std::string_view value,
                        ItemType type) override;
    void WriteTypeAttribute(std::string_view typeNamespaceUri, std::string_view typeName,
                            ItemType type) override;
    void WriteNilAttribute() override;

private:
    struct NameEntry;
    struct State;

    State& Begun();
    void StartContent();
    void StartItem();
    void CloseStartTag();
    void WriteElementName(NameEntry& entry, std::uint32_t prefix);
    void WritePendingStart();
    void WriteDeferredAttributes();
    void WriteAttributeNow(std::string_view localName, std::string_view namespaceUri, std::string_view value,
                           ItemType type);
    std::uint32_t PrefixFor(std::uint32_t ns, bool isElement);
    std::uint32_t DeclaredNamespace(std::string_view prefix);
    void Declare(std::string_view prefix, std::string_view uri, bool isByAttribute = false);
    bool TryWriteMarkup(std::string_view text);
    void WriteInstruction(std::string_view text);
    void RequireOpenStartTag() const;

    CFastInfosetContext m_settings;
    FInfoDecl m_decl;
    bool m_writeDefaultValues;
    bool m_lossless = false;
    std::unique_ptr<State> m_state;
};

}  // namespace KvXmlLib16
