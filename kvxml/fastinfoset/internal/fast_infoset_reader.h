/// Reads Fast Infoset documents (ITU-T X.891) into a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/fastinfoset/internal/octet_cursor.h"
#include "kvxml/fastinfoset/internal/reader_tables.h"
#include "kvxml/xml/internal/xml_tree_builder.h"

namespace KvXmlLib16 {

class CFastInfosetContext;

namespace internal {

/// True for bytes that begin as a Fast Infoset document does, which no XML text begins like: with a
/// declaration of the encoding "finf" or with the binary identification. The document may be damaged.
bool IsFastInfoset(const unsigned char* data, std::size_t length) noexcept;

/// What a reader has to know besides the document.
struct CFastInfosetOptions {
    bool namespaces = true;        ///< else names keep their prefixes, and declarations become attributes
    bool keepCData = false;        ///< texts keep the markers of CDATA sections
    std::size_t maxExpansion = 0;  ///< as the context has it
};

/// One pass over one document. Errors are CKvException "Failed to parse FastInfoset. %s at octet %llu",
/// except those of the element filter, which pass as they are.
class CFastInfosetReader {
public:
    /// The context is where external vocabularies are looked up.
    CFastInfosetReader(CXmlTree& tree, CXmlTreeBuilder& builder, const CFastInfosetContext& context,
                       const CFastInfosetOptions& options, std::string_view document);

    void Parse();

private:
    static constexpr std::uint32_t kUnbound = UINT32_MAX;
    static constexpr const char* kNoEntry = "An index is beyond the end of its table";

    /// Where a string stands, which decides on the forms that it may have.
    enum class Use { Text, Value, Other };
    /// The bit of its first octet that a literal string starts on.
    enum class Start { Bit3, Bit5 };

    struct Literal {
        std::string_view text;
        bool isInDocument;  // else in m_text
        bool isCData;
    };
    /// What a prefix stood for outside of an element that declares it.
    struct Scope {
        std::uint64_t depth;
        std::uint32_t prefix;
        std::uint32_t previous;
    };

    // Document level
    void Document();
    void Header();
    void DocumentType(unsigned octet);
    void AdditionalData();
    void Notations();
    void UnparsedEntities();

    // Vocabularies
    void InitialVocabulary();
    void ExternalVocabulary();
    std::string_view OctetString();
    std::string_view VocabularyName();
    CReaderName Surrogate();
    std::uint32_t SurrogateIndex(std::size_t size);

    // Elements
    bool Content();
    void Element(unsigned octet);
    void NamespaceAttributes();
    void Declare(std::uint32_t prefix, std::uint32_t namespaceUri, std::size_t offset);
    bool Attributes();
    const CReaderName& IndexedName(const std::vector<CReaderName>& table, std::uint32_t index,
                                   std::size_t offset) const;
    CReaderName LiteralName(unsigned octet, std::vector<CReaderName>& table);
    CReaderName MakeName(std::uint32_t prefix, std::uint32_t namespaceUri, std::string_view local);
    bool IsInScope(const CReaderName& name) const noexcept {
        return name.prefix < m_bound.size() && m_bound[name.prefix] == name.namespaceUri;
    }
    void EndElement() {
        m_builder.EndElement();
        --m_depth;
        while (!m_scopes.empty() && m_scopes.back().depth > m_depth)
            EndScope();
    }
    void EndScope() noexcept;

    // Content
    void Chunk(unsigned octet);
    void IndexedChunk(unsigned octet);
    CXmlNewAttribute AttributeValue(const CXmlName* name);
    void ProcessingInstruction();
    void EntityReference(unsigned octet);

    // Strings
    std::string_view IdentifyingLiteral(unsigned octet, bool isName);
    std::uint32_t PrefixOrNamespace(CReaderStrings& strings, bool isName);
    std::string_view LocalName();
    void SkipIdentifyingString(std::size_t& count, bool isName);
    void SkipIdentifiers(unsigned octet);
    void SkipOtherString();
    Literal EncodedString(unsigned octet, Start start, Use use);
    Literal DecodeAlgorithmText(unsigned number, std::string_view octets, std::size_t offset, Use use);
    void RemoveReturns(Literal& literal);
    CReaderText NewEntry(const Literal& literal);
    void Share(CReaderText& entry);
    void Grow(std::size_t length);

    CXmlTree& m_tree;
    CXmlTreeBuilder& m_builder;
    const CFastInfosetContext& m_context;
    const CFastInfosetOptions m_options;
    COctetCursor m_in;
    CReaderTables m_tables;
    std::vector<CXmlNewAttribute> m_attributes;
    std::vector<std::uint32_t> m_bound;       // number of the namespace, by that of the prefix
    std::vector<std::uint64_t> m_declaredBy;  // the element that declared the prefix last, likewise
    std::vector<Scope> m_scopes;
    CArena m_scratch;  // values of one element that are neither in the document nor shared
    CArena::Mark m_scratchStart{};
    bool m_hasScratch = false;
    std::string m_text;  // a string that was decoded
    std::string m_qualified;
    std::uint64_t m_element = 0;  // number of the element being read
    std::size_t m_elementOffset = 0;
    std::uint64_t m_depth = 0;
    std::uint64_t m_growthLeft;
};

}  // namespace internal
}  // namespace KvXmlLib16
