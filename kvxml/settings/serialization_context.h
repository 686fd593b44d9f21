/// Settings handed to every read and write.
///
///     CSerializationContext context;
///     context.SetIgnoreUnknownElements(true);
///     gpx->FromXmlFile("track.gpx", context);
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kvxml/export.h"
#include "kvxml/settings/default_context.h"
#include "kvxml/settings/namespace_alias_map.h"

namespace KvXmlLib16 {

class CAttributeCol;
class CDocumentCheck;
class CFastInfosetContext;
class CJsonContext;
template <class T>
class CSmartPtr;

/// Kind of schema that the classes were generated from.
enum SchemaType : std::int32_t {
    /// Not said; names are matched with their namespaces.
    SchemaType_Default = 0,
    /// A schema with namespaces; as the default.
    SchemaType_Namespaces = 1,
    /// A schema without namespaces: elements are matched by their local names alone.
    SchemaType_NoNamespaces = 2,
};

/// Decides which deviations from the schema a reader tolerates, how names are matched, what writers add to
/// the document and how they lay it out.
///
/// Copies own their settings, but share the JSON settings, the Fast Infoset settings and the additional root
/// attributes, if these were there when the copy was made, and the document check. Several threads may read
/// one context at once.
class KVXML_EXPORT CSerializationContext {
public:
    CSerializationContext();
    CSerializationContext(const CSerializationContext& other);
    CSerializationContext& operator=(const CSerializationContext& other);
    virtual ~CSerializationContext();

    /// The context of every call that passes none; changes hold for all later ones.
    static CSerializationContext& GetDefaultContext();

    /// @name What readers tolerate. All are off by default.
    /// @{

    /// Skip attributes that the metadata does not know.
    bool GetIgnoreUnknownAttributes() const noexcept { return m_ignoreUnknownAttributes; }
    void SetIgnoreUnknownAttributes(bool value) noexcept { m_ignoreUnknownAttributes = value; }
    /// Skip elements that the metadata does not know. Setting it while IgnoreMissingMandatoryElements is set
    /// throws CKvInvalidStateException.
    bool GetIgnoreUnknownElements() const noexcept { return m_ignoreUnknownElements; }
    void SetIgnoreUnknownElements(bool value);
    /// Accept absent mandatory elements. Setting it while IgnoreUnknownElements is set throws
    /// CKvInvalidStateException.
    bool GetIgnoreMissingMandatoryElements() const noexcept { return m_ignoreMissingMandatoryElements; }
    void SetIgnoreMissingMandatoryElements(bool value);
    /// Accept a choice of which no member is present.
    bool GetIgnoreMissingChoice() const noexcept { return m_ignoreMissingChoice; }
    void SetIgnoreMissingChoice(bool value) noexcept { m_ignoreMissingChoice = value; }
    /// Accept collections with fewer or more items than the metadata allows.
    bool GetIgnoreInvalidCollectionCounts() const noexcept { return m_ignoreInvalidCollectionCounts; }
    void SetIgnoreInvalidCollectionCounts(bool value) noexcept { m_ignoreInvalidCollectionCounts = value; }
    /// Match elements without their namespace. Also true, whatever was set, under SchemaType_NoNamespaces.
    bool GetIgnoreNamespaces() const noexcept {
        return m_ignoreNamespaces || m_schemaType == SchemaType_NoNamespaces;
    }
    void SetIgnoreNamespaces(bool value) noexcept { m_ignoreNamespaces = value; }

    /// @}
    /// @name How documents are read
    /// @{

    /// Default SchemaType_Default.
    SchemaType GetSchemaType() const noexcept { return m_schemaType; }
    void SetSchemaType(SchemaType value) noexcept { m_schemaType = value; }
    /// Deliver CDATA sections as plain text, without their markers. Default true.
    bool GetStripCDATA() const noexcept { return m_stripCDATA; }
    void SetStripCDATA(bool value) noexcept { m_stripCDATA = value; }
    /// Judges every document that is loaded, in the pass that reads it, and refuses it with a
    /// CKvSchemaValidationException. Default null: nobody does. docs/schemas.md tells more.
    const std::shared_ptr<const CDocumentCheck>& GetDocumentCheck() const noexcept { return m_documentCheck; }
    void SetDocumentCheck(std::shared_ptr<const CDocumentCheck> check) noexcept {
        m_documentCheck = std::move(check);
    }
    /// @}
    /// @name Limits against hostile input
    /// All are on by default, and 0 switches one off. They hold for XML, Fast Infoset and JSON, read from
    /// text, bytes or files; what is beyond one is refused with a CKvException that says which and where.
    /// docs/limits.md tells what each protects from.
    /// @{

    /// Depth of nested elements; the document element has depth 1. Also holds for writing. Default 1000,
    /// which keeps the reading of recursive classes within an ordinary stack.
    std::uint32_t GetMaxElementDepth() const noexcept { return m_maxElementDepth; }
    void SetMaxElementDepth(std::uint32_t value) noexcept { m_maxElementDepth = value; }
    /// Number of bytes that compressed input may inflate to. Default 1 GiB.
    std::size_t GetMaxInflatedSize() const noexcept { return m_maxInflatedSize; }
    void SetMaxInflatedSize(std::size_t value) noexcept { m_maxInflatedSize = value; }
    /// Number of bytes that each byte of compressed input may inflate to, on average. Not looked at before
    /// 8 MiB have come out, so that small documents may be as regular as they like. Default 250.
    std::uint32_t GetMaxInflationRatio() const noexcept { return m_maxInflationRatio; }
    void SetMaxInflationRatio(std::uint32_t value) noexcept { m_maxInflationRatio = value; }
    /// Number of bytes that a document may gain by entities and default attributes of its document type, or
    /// by table entries of Fast Infoset. A larger gain must be less than 100 times what was read of the
    /// document. Default 8 MiB.
    std::size_t GetMaxExpansion() const noexcept { return m_maxExpansion; }
    void SetMaxExpansion(std::size_t value) noexcept { m_maxExpansion = value; }
    /// Number of distinct names of elements and attributes in one document; a name in two namespaces is two.
    /// Default 250,000.
    std::size_t GetMaxDistinctNames() const noexcept { return m_maxDistinctNames; }
    void SetMaxDistinctNames(std::size_t value) noexcept { m_maxDistinctNames = value; }

    /// @}
    /// @name What is written
    /// @{

    /// Namespace written as the default namespace of the document. Default empty: none.
    std::string GetDefaultNamespaceURI() const { return m_defaultNamespaceUri; }
    const std::string& GetDefaultNamespaceURIRef() const noexcept { return m_defaultNamespaceUri; }
    void SetDefaultNamespaceURI(const char* value);
    /// Prefixes declared on the root element. Default empty.
    CNamespaceAliasMap& GetNamespaceAliases() noexcept { return m_namespaceAliases; }
    const CNamespaceAliasMap& GetNamespaceAliases() const noexcept { return m_namespaceAliases; }
    /// Write the XML Schema instance `type` attribute where a derived type stands for its base. Default true.
    bool GetWriteTypeAttribute() const noexcept { return m_writeTypeAttribute; }
    void SetWriteTypeAttribute(bool value) noexcept { m_writeTypeAttribute = value; }
    /// Leave out optional attributes whose value equals their default. Default false.
    bool GetNoOptionalAttributeDefaultOutput() const noexcept { return m_noOptionalAttributeDefaultOutput; }
    void SetNoOptionalAttributeDefaultOutput(bool value) noexcept {
        m_noOptionalAttributeDefaultOutput = value;
    }
    /// Write the text of elements whose value equals their default. Default false.
    bool GetWriteDefaultElementValues() const noexcept { return m_writeDefaultElementValues; }
    void SetWriteDefaultElementValues(bool value) noexcept { m_writeDefaultElementValues = value; }
    /// Indentation of one level of formatted XML: blanks and tabs only, CKvInvalidParamException for others.
    /// Default one tab; null means none.
    std::string GetIndentChars() const { return m_indentChars; }
    const std::string& GetIndentCharsRef() const noexcept { return m_indentChars; }
    void SetIndentChars(const char* value);
    /// Processing instructions, complete with their delimiters, written before the root element. Default
    /// none.
    std::vector<std::string>& GetProcessingInstructions() noexcept { return m_processingInstructions; }
    const std::vector<std::string>& GetProcessingInstructions() const noexcept {
        return m_processingInstructions;
    }
    /// Text of a schema. One that begins with "<" becomes the first content of the root element, unless that
    /// is nil; any other is written into its start tag, as it is. Default empty: none.
    std::string GetInLineSchema() const { return m_inLineSchema; }
    const std::string& GetInLineSchemaRef() const noexcept { return m_inLineSchema; }
    void SetInLineSchema(const char* value);
    /// Attributes written on the root element, in any namespace, but for those that the object writes itself.
    /// Created empty by the first call; the same collection from then on, also in copies of this context made
    /// later.
    CSmartPtr<CAttributeCol> GetAdditionalRootAttributes();
    /// The same without creating it: null when nobody has asked for it. Owned by the context.
    const CAttributeCol* FindAdditionalRootAttributes() const noexcept;

    /// @}
    /// @name Settings of the other formats
    /// Created with their defaults by the first call, which may come from any thread, and owned by the
    /// context. The references stay good until the context is destroyed or assigned to.
    /// @{

    CFastInfosetContext& GetFIContext() const;
    CJsonContext& GetJsonContext() const;

    /// @}

private:
    struct Shared;

    std::unique_ptr<Shared> m_shared;
    std::shared_ptr<const CDocumentCheck> m_documentCheck;
    std::string m_defaultNamespaceUri;
    CNamespaceAliasMap m_namespaceAliases;
    std::vector<std::string> m_processingInstructions;
    std::string m_inLineSchema;
    std::string m_indentChars;
    std::size_t m_maxInflatedSize = std::size_t{1} << 30;
    std::size_t m_maxExpansion = std::size_t{8} << 20;
    std::size_t m_maxDistinctNames = 250000;
    std::uint32_t m_maxElementDepth = 1000;
    std::uint32_t m_maxInflationRatio = 250;
    SchemaType m_schemaType = SchemaType_Default;
    bool m_writeTypeAttribute = true;
    bool m_ignoreInvalidCollectionCounts = false;
    bool m_ignoreMissingChoice = false;
    bool m_ignoreMissingMandatoryElements = false;
    bool m_ignoreUnknownElements = false;
    bool m_ignoreUnknownAttributes = false;
    bool m_ignoreNamespaces = false;
    bool m_noOptionalAttributeDefaultOutput = false;
    bool m_writeDefaultElementValues = false;
    bool m_stripCDATA = true;
};

}  // namespace KvXmlLib16
