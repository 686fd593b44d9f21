#include "kvxml/fastinfoset/internal/fast_infoset_reader.h"

#include <algorithm>

#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/tree_limits.h"
#include "kvxml/xml/internal/xml_name_check.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::string_view kDeclarations[] = {
    "<?xml encoding='finf'?>",
    "<?xml encoding='finf' standalone='no'?>",
    "<?xml encoding='finf' standalone='yes'?>",
    "<?xml version='1.0' encoding='finf'?>",
    "<?xml version='1.0' encoding='finf' standalone='no'?>",
    "<?xml version='1.0' encoding='finf' standalone='yes'?>",
    "<?xml version='1.1' encoding='finf'?>",
    "<?xml version='1.1' encoding='finf' standalone='no'?>",
    "<?xml version='1.1' encoding='finf' standalone='yes'?>",
};

constexpr std::uint64_t kMaxAttributes = (1U << 28) - 1;

std::size_t DeclarationLength(std::string_view text) noexcept {
    for (const std::string_view declaration : kDeclarations) {
        if (text.substr(0, declaration.size()) == declaration) return declaration.size();
    }
    return 0;
}

const unsigned char* Octets(std::string_view text) noexcept {
    return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

bool IsFastInfoset(const unsigned char* data, std::size_t length) noexcept {
    if (data == nullptr || length == 0) return false;
    if (data[0] == 0xE0) return length == 1 || data[1] == 0;
    return DeclarationLength(std::string_view(reinterpret_cast<const char*>(data), length)) != 0;
}

CFastInfosetReader::CFastInfosetReader(CXmlTree& tree, CXmlTreeBuilder& builder,
                                       const CFastInfosetContext& context, const CFastInfosetOptions& options,
                                       std::string_view document)
    : m_tree(tree),
      m_builder(builder),
      m_context(context),
      m_options(options),
      m_in(Octets(document), document.size()),
      m_bound{0, CReaderTables::kXml},
      m_growthLeft(
          std::max<std::uint64_t>(OrUnlimited(options.maxExpansion), kMaxExpansionRatio * document.size())) {
    m_in.Octets(DeclarationLength(document));
}

void CFastInfosetReader::Parse() {
    try {
        Document();
    } catch (const CTreeLimitPassed& e) {
        m_builder.Abandon();
        std::string message = e.Message();
        message.front() = static_cast<char>(message.front() - 'a' + 'A');
        COctetCursor::FailAt(m_elementOffset != 0 ? m_elementOffset : m_in.Offset(), message);
    } catch (...) {
        m_builder.Abandon();
        throw;
    }
}

// --- document level ---------------------------------------------------------------------------------------

void CFastInfosetReader::Document() {
    Header();
    bool hasType = false;
    bool hasElement = false;
    for (;;) {
        const std::size_t offset = m_in.Offset();
        const unsigned octet = m_in.Octet();
        if (octet < 0x80) {
            if (hasElement) COctetCursor::FailAt(offset, "There is a second document element");
            hasElement = true;
            Element(octet);
            if (Content()) break;
        } else if (octet == 0xE1) {
            ProcessingInstruction();
        } else if (octet == 0xE2) {
            SkipOtherString();
        } else if (octet == 0xF0) {
            if (!hasElement) COctetCursor::FailAt(offset, "There is no document element");
            break;
        } else if (octet >= 0xC4 && octet <= 0xC7 && !hasElement && !hasType) {
            hasType = true;
            DocumentType(octet);
        } else {
            COctetCursor::FailAt(offset, "An octet does not begin anything that a document may contain");
        }
    }
    if (m_in.Left() != 0) m_in.Fail("There is something behind the end of the document");
}

void CFastInfosetReader::Header() {
    for (const unsigned expected : {0xE0U, 0x00U, 0x00U, 0x01U}) {
        const std::size_t offset = m_in.Offset();
        if (m_in.Octet() != expected)
            COctetCursor::FailAt(offset, "The identification or version is not that of the format");
    }
    const std::size_t offset = m_in.Offset();
    const unsigned components = m_in.Octet();
    if ((components & 0x80) != 0) COctetCursor::FailAt(offset, "Reserved bits are set");
    if ((components & 0x40) != 0) AdditionalData();
    if ((components & 0x20) != 0) InitialVocabulary();
    if ((components & 0x10) != 0) Notations();
    if ((components & 0x08) != 0) UnparsedEntities();
    if ((components & 0x04) != 0) OctetString();  // the name of an encoding; says nothing about this document
    if ((components & 0x02) != 0) {
        if (m_in.Peek() > 1) m_in.Fail("Reserved bits are set");
        m_in.Octet();
    }
    if ((components & 0x01) != 0) SkipOtherString();
}

void CFastInfosetReader::DocumentType(unsigned octet) {
    SkipIdentifiers(octet);
    for (;;) {
        const unsigned child = m_in.Peek();
        if (child != 0xE1 && child != 0xF0)
            m_in.Fail("An octet does not begin anything that a document type may contain");
        m_in.Octet();
        if (child == 0xF0) return;
        ProcessingInstruction();
    }
}

void CFastInfosetReader::AdditionalData() {
    for (std::uint32_t left = m_in.SequenceLength(); left > 0; --left) {
        OctetString();
        const std::size_t offset = m_in.Offset();
        const unsigned first = m_in.Octet();
        if (first >= 0x80) COctetCursor::FailAt(offset, "Reserved bits are set in a length");
        m_in.Octets(m_in.LengthOnBit2(first));
    }
}

void CFastInfosetReader::Notations() {
    for (;;) {
        const unsigned octet = m_in.Peek();
        if (octet != 0xF0 && (octet & 0xFC) != 0xC0) m_in.Fail("An octet does not begin a notation");
        m_in.Octet();
        if (octet == 0xF0) return;
        SkipIdentifyingString(m_tables.otherNames, true);
        SkipIdentifiers(octet);
    }
}

void CFastInfosetReader::UnparsedEntities() {
    for (;;) {
        const unsigned octet = m_in.Peek();
        if (octet != 0xF0 && (octet & 0xFE) != 0xD0) m_in.Fail("An octet does not begin an unparsed entity");
        m_in.Octet();
        if (octet == 0xF0) return;
        SkipIdentifyingString(m_tables.otherNames, true);
        SkipIdentifiers(octet | 2);  // the system identifier is always there
        SkipIdentifyingString(m_tables.otherNames, true);
    }
}

// --- elements ---------------------------------------------------------------------------------------------

/// Reads up to the end of the document element; true when its terminator ends the document as well.
bool CFastInfosetReader::Content() {
    while (m_depth > 0) {
        const unsigned octet = m_in.Octet();
        if (octet < 0x80) {
            Element(octet);
        } else if (octet < 0xA0) {
            Chunk(octet);
        } else if (octet < 0xC0) {
            IndexedChunk(octet);
        } else if (octet == 0xF0) {
            EndElement();
        } else if (octet == 0xFF) {
            EndElement();
            if (m_depth == 0) return true;
            EndElement();
        } else if (octet == 0xE1) {
            ProcessingInstruction();
        } else if (octet == 0xE2) {
            SkipOtherString();
        } else if ((octet & 0xFC) == 0xC8) {
            EntityReference(octet);
        } else {
            COctetCursor::FailAt(m_in.Offset() - 1, "Reserved octet");
        }
    }
    return false;
}

void CFastInfosetReader::Element(unsigned octet) {
    ++m_element;
    m_elementOffset = m_in.Offset() - 1;
    m_attributes.clear();
    const bool hasAttributes = (octet & 0x40) != 0;
    unsigned start = octet & 0x3F;
    if (start == 0x38) {
        NamespaceAttributes();
        start = m_in.Peek();
        if (start >= 0x40) m_in.Fail("Reserved bits are set");
        m_in.Octet();
    }
    const std::size_t offset = m_in.Offset() - 1;
    CReaderName name;
    if (start <= 0x30) {
        name = IndexedName(m_tables.elementNames, m_in.IndexOnBit3(start), offset);
    } else if (start == 0x3C || start == 0x3D || start == 0x3F) {
        name = LiteralName(start, m_tables.elementNames);
    } else {
        COctetCursor::FailAt(offset, "Reserved octet");
    }
    if (!IsInScope(name))
        COctetCursor::FailAt(offset, "A prefix does not stand for the namespace of its name");
    const bool isEmpty = hasAttributes && Attributes();
    m_builder.StartElement(name.name, m_attributes.data(), m_attributes.size());
    ++m_depth;
    if (m_hasScratch) {
        m_scratch.Rewind(m_scratchStart);
        m_hasScratch = false;
    }
    if (isEmpty) EndElement();
}

void CFastInfosetReader::NamespaceAttributes() {
    for (;;) {
        const std::size_t offset = m_in.Offset();
        const unsigned octet = m_in.Octet();
        if (octet == 0xF0) return;
        if ((octet & 0xFC) != 0xCC) COctetCursor::FailAt(offset, "An octet does not begin a declaration");
        const std::uint32_t prefix = (octet & 2) != 0 ? PrefixOrNamespace(m_tables.prefixes, true) : 0;
        const std::uint32_t uri = (octet & 1) != 0 ? PrefixOrNamespace(m_tables.namespaces, false) : 0;
        Declare(prefix, uri, offset);
    }
}

void CFastInfosetReader::Declare(std::uint32_t prefix, std::uint32_t namespaceUri, std::size_t offset) {
    if ((prefix == CReaderTables::kXml) != (namespaceUri == CReaderTables::kXml))
        COctetCursor::FailAt(offset, "The prefix xml and its namespace belong together");
    if (prefix >= m_bound.size()) m_bound.resize(m_tables.prefixes.GetCount(), kUnbound);
    if (m_declaredBy.size() < m_bound.size()) m_declaredBy.resize(m_bound.size());
    if (m_declaredBy[prefix] == m_element) COctetCursor::FailAt(offset, "An element declares a prefix twice");
    m_declaredBy[prefix] = m_element;
    m_scopes.push_back({m_depth + 1, prefix, m_bound[prefix]});
    m_bound[prefix] = prefix != 0 && namespaceUri == 0 ? kUnbound : namespaceUri;
    const std::string_view prefixText = m_tables.prefixes.GetText(prefix);
    const std::string_view uri = m_tables.namespaces.GetText(namespaceUri);
    Grow(prefixText.size() + uri.size());
    if (m_options.namespaces) {
        m_builder.DeclarePrefix(prefixText, uri);
        return;
    }
    m_qualified = "xmlns";
    if (prefix != 0) m_qualified.append(1, ':').append(prefixText);
    m_attributes.push_back({m_tree.Names().Intern({}, m_qualified), uri, false});
}

void CFastInfosetReader::EndScope() noexcept {
    m_bound[m_scopes.back().prefix] = m_scopes.back().previous;
    m_scopes.pop_back();
}

/// True when the terminator ends the element as well.
bool CFastInfosetReader::Attributes() {
    for (;;) {
        const std::size_t offset = m_in.Offset();
        const unsigned octet = m_in.Octet();
        CReaderName name;
        if (octet < 0x70) {
            name = IndexedName(m_tables.attributeNames, m_in.IndexOnBit2(octet), offset);
        } else if (octet == 0x78 || octet == 0x79 || octet == 0x7B) {
            name = LiteralName(octet, m_tables.attributeNames);
        } else if (octet == 0xF0 || octet == 0xFF) {
            return octet == 0xFF;
        } else {
            COctetCursor::FailAt(offset, "An octet does not begin an attribute");
        }
        if (name.prefix != 0 && !IsInScope(name))
            COctetCursor::FailAt(offset, "A prefix does not stand for the namespace of its name");
        if (name.prefix == 0 && name.namespaceUri == 0 && name.name->raw == "xmlns")
            COctetCursor::FailAt(offset, "A declaration is written as an attribute");
        if (name.name->lastElement == m_element)
            COctetCursor::FailAt(offset, "An element has two attributes of one name");
        name.name->lastElement = m_element;
        if (m_attributes.size() == kMaxAttributes)
            COctetCursor::FailAt(offset, "An element has too many attributes");
        m_attributes.push_back(AttributeValue(name.name));
    }
}

const CReaderName& CFastInfosetReader::IndexedName(const std::vector<CReaderName>& table, std::uint32_t index,
                                                   std::size_t offset) const {
    if (index >= table.size()) COctetCursor::FailAt(offset, kNoEntry);
    return table[index];
}

/// `octet` tells in its last two bits which parts there are.
CReaderName CFastInfosetReader::LiteralName(unsigned octet, std::vector<CReaderName>& table) {
    const std::uint32_t prefix = (octet & 2) != 0 ? PrefixOrNamespace(m_tables.prefixes, true) : 0;
    const std::uint32_t uri = (octet & 1) != 0 ? PrefixOrNamespace(m_tables.namespaces, false) : 0;
    const CReaderName name = MakeName(prefix, uri, LocalName());
    AddToTable(table, name);
    return name;
}

CReaderName CFastInfosetReader::MakeName(std::uint32_t prefix, std::uint32_t namespaceUri,
                                         std::string_view local) {
    const std::string_view prefixText = m_tables.prefixes.GetText(prefix);
    const std::string_view uri = m_tables.namespaces.GetText(namespaceUri);
    Grow(prefixText.size() + local.size());
    if (m_options.namespaces) return {m_tree.Names().Intern(uri, local), prefix, namespaceUri};
    m_qualified.assign(prefixText);
    if (prefix != 0) m_qualified += ':';
    m_qualified += local;
    return {m_tree.Names().Intern({}, m_qualified), prefix, namespaceUri};
}

// --- content ----------------------------------------------------------------------------------------------

void CFastInfosetReader::Chunk(unsigned octet) {
    Literal literal = EncodedString(octet, Start::Bit5, Use::Text);
    const bool keepMarkers = literal.isCData && m_options.keepCData;
    if (keepMarkers) m_builder.AppendText("<![CDATA[", 9);
    m_builder.AppendText(literal.text.data(), literal.text.size());
    if (keepMarkers) m_builder.AppendText("]]>", 3);
    if ((octet & 0x10) != 0) AddToTable(m_tables.texts, NewEntry(literal));
}

void CFastInfosetReader::IndexedChunk(unsigned octet) {
    const std::size_t offset = m_in.Offset() - 1;
    const std::uint32_t index = m_in.IndexOnBit4(octet);
    if (index >= m_tables.texts.size()) COctetCursor::FailAt(offset, kNoEntry);
    CReaderText& entry = m_tables.texts[index];
    Grow(entry.text.size());
    if (entry.isBlank) {
        m_builder.AppendText(entry.text.data(), entry.text.size());
        return;
    }
    if (!entry.isShared) Share(entry);
    m_builder.AppendShared(entry.text.data(), entry.text.size());
}

CXmlNewAttribute CFastInfosetReader::AttributeValue(const CXmlName* name) {
    const std::size_t offset = m_in.Offset();
    const unsigned octet = m_in.Octet();
    if (octet == 0xFF) return {name, {}, false};
    if ((octet & 0x80) != 0) {
        const std::uint32_t index = m_in.IndexOnBit2(octet);
        if (index >= m_tables.values.size()) COctetCursor::FailAt(offset, kNoEntry);
        CReaderText& entry = m_tables.values[index];
        Grow(entry.text.size());
        if (!entry.isShared) Share(entry);
        return {name, entry.text, true};
    }
    const Literal literal = EncodedString(octet, Start::Bit3, Use::Value);
    if (literal.text.size() > UINT32_MAX) COctetCursor::FailAt(offset, "An attribute value is too long");
    if ((octet & 0x40) != 0) {
        const CReaderText entry = NewEntry(literal);
        AddToTable(m_tables.values, entry);
        return {name, entry.text, entry.isShared};
    }
    if (literal.isInDocument) return {name, literal.text, false};
    if (!m_hasScratch) m_scratchStart = m_scratch.GetMark();
    m_hasScratch = true;
    m_scratch.AppendToRun(literal.text.data(), literal.text.size());
    return {name, std::string_view(m_scratch.CommitRun(), literal.text.size()), false};
}

void CFastInfosetReader::ProcessingInstruction() {
    SkipIdentifyingString(m_tables.otherNames, true);
    SkipOtherString();
}

/// Nothing of the text that it stands for is known, so it leaves no trace, as in XML.
void CFastInfosetReader::EntityReference(unsigned octet) {
    SkipIdentifyingString(m_tables.otherNames, true);
    SkipIdentifiers(octet);
}

}  // namespace KvXmlLib16::internal
