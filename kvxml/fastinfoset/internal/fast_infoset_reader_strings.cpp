// Strings and vocabularies.
#include <algorithm>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/fastinfoset/internal/fast_infoset_reader.h"
#include "kvxml/settings/fast_infoset_context.h"
#include "kvxml/settings/fast_infoset_vocabulary.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/xml_name_check.h"

namespace KvXmlLib16::internal {

namespace {

constexpr const char* kNotText = "A text is not well-formed UTF-8 or has a character that is not allowed";
constexpr const char* kNotName = "A name is not well-formed";
constexpr const char* kReserved = "Reserved bits are set";

bool IsReservedName(std::string_view text) noexcept {
    return text == "xml" || text == "xmlns" || text == internal::kXmlNamespace ||
           text == internal::kXmlnsNamespace;
}

/// Blanks that the tree shares between elements.
bool IsShortBlank(std::string_view text) noexcept {
    return text.size() <= CSharedTextRuns::kMaxLength &&
           text.find_first_not_of(" \t\n") == std::string_view::npos;
}

}  // namespace

// --- identifying strings ----------------------------------------------------------------------------------

/// `octet` has its first bit clear.
std::string_view CFastInfosetReader::IdentifyingLiteral(unsigned octet, bool isName) {
    const std::size_t offset = m_in.Offset() - 1;
    const std::string_view text = m_in.Octets(m_in.LengthOnBit2(octet));
    bool hasReturns = false;
    if (!IsXmlText(text, hasReturns)) COctetCursor::FailAt(offset, kNotText);
    if (isName && !IsXmlName(text, false)) COctetCursor::FailAt(offset, kNotName);
    return text;
}

std::uint32_t CFastInfosetReader::PrefixOrNamespace(CReaderStrings& strings, bool isName) {
    const std::size_t offset = m_in.Offset();
    const unsigned octet = m_in.Octet();
    if (octet >= 0x80) {
        const std::uint32_t index = m_in.IndexOnBit2(octet);
        if (index >= strings.entries.size()) COctetCursor::FailAt(offset, kNoEntry);
        return strings.entries[index];
    }
    const std::string_view text = IdentifyingLiteral(octet, isName);
    if (IsReservedName(text)) COctetCursor::FailAt(offset, "A reserved prefix or namespace is declared");
    const std::uint32_t number = strings.GetNumber(text);
    AddToTable(strings.entries, number);
    return number;
}

std::string_view CFastInfosetReader::LocalName() {
    const std::size_t offset = m_in.Offset();
    const unsigned octet = m_in.Octet();
    if (octet < 0x80) {
        const std::string_view text = IdentifyingLiteral(octet, true);
        AddToTable(m_tables.localNames, text);
        return text;
    }
    const std::uint32_t index = m_in.IndexOnBit2(octet);
    if (index >= m_tables.localNames.size()) COctetCursor::FailAt(offset, kNoEntry);
    return m_tables.localNames[index];
}

void CFastInfosetReader::SkipIdentifyingString(std::size_t& count, bool isName) {
    const std::size_t offset = m_in.Offset();
    const unsigned octet = m_in.Octet();
    if (octet < 0x80) {
        IdentifyingLiteral(octet, isName);
        count = std::min(count + 1, kMaxReaderTable);
    } else if (m_in.IndexOnBit2(octet) >= count) {
        COctetCursor::FailAt(offset, kNoEntry);
    }
}

/// `octet` tells in its last two bits which identifiers there are.
void CFastInfosetReader::SkipIdentifiers(unsigned octet) {
    if ((octet & 2) != 0) SkipIdentifyingString(m_tables.otherUris, false);
    if ((octet & 1) != 0) SkipIdentifyingString(m_tables.otherUris, false);
}

// --- other strings ----------------------------------------------------------------------------------------

/// A string of which no tree keeps anything.
void CFastInfosetReader::SkipOtherString() {
    const std::size_t offset = m_in.Offset();
    const unsigned octet = m_in.Octet();
    if (octet == 0xFF) return;
    if (octet < 0x80) {
        EncodedString(octet, Start::Bit3, Use::Other);
        if ((octet & 0x40) != 0) m_tables.otherTexts = std::min(m_tables.otherTexts + 1, kMaxReaderTable);
    } else if (m_in.IndexOnBit2(octet) >= m_tables.otherTexts) {
        COctetCursor::FailAt(offset, kNoEntry);
    }
}

/// The string that starts in `octet`, the octet just taken.
CFastInfosetReader::Literal CFastInfosetReader::EncodedString(unsigned octet, Start start, Use use) {
    const std::size_t offset = m_in.Offset() - 1;
    const bool onBit3 = start == Start::Bit3;
    const unsigned format = octet >> (onBit3 ? 4 : 2) & 3;
    unsigned number = 0;
    if (format >= 2) {
        const unsigned next = m_in.Octet();
        number = onBit3 ? (octet & 0x0F) << 4 | next >> 4 : (octet & 3) << 6 | next >> 2;
        octet = next;
    }
    const std::uint64_t length = onBit3 ? m_in.LengthOnBit5(octet) : m_in.LengthOnBit7(octet);
    const std::string_view octets = m_in.Octets(length);
    Literal literal{octets, true, false};
    bool hasReturns = false;
    const char* error = nullptr;
    switch (format) {
        case 0:
            if (!IsXmlText(octets, hasReturns)) error = kNotText;
            break;
        case 1:
            error = DecodeUtf16(octets, m_text);
            hasReturns = true;  // maybe
            literal = {m_text, false, false};
            break;
        case 2: {
            const CRestrictedAlphabet* const alphabet = m_tables.FindAlphabet(number);
            error = alphabet == nullptr ? "Unknown restricted alphabet" : alphabet->Decode(octets, m_text);
            hasReturns = true;
            literal = {m_text, false, false};
            break;
        }
        default:
            literal = DecodeAlgorithmText(number, octets, offset, use);
            hasReturns = literal.isCData;
            break;
    }
    if (error != nullptr) COctetCursor::FailAt(offset, error);
    if (hasReturns && use == Use::Text) RemoveReturns(literal);
    return literal;
}

CFastInfosetReader::Literal CFastInfosetReader::DecodeAlgorithmText(unsigned number, std::string_view octets,
                                                                    std::size_t offset, Use use) {
    const auto algorithm = static_cast<EncodingAlgorithm>(number);
    const bool isCData = algorithm == EncodingAlgorithm::CData;
    if (use == Use::Other || (isCData && use != Use::Text))
        COctetCursor::FailAt(offset, "An encoding algorithm is used where it is not allowed");
    if (isCData) {
        bool hasReturns = false;
        if (!IsXmlText(octets, hasReturns)) COctetCursor::FailAt(offset, kNotText);
        if (octets.find("]]>") != std::string_view::npos)
            COctetCursor::FailAt(offset, "A CDATA section contains its own end");
        return {octets, true, true};
    }
    const char* const error = DecodeAlgorithm(algorithm, octets, m_text);
    if (error != nullptr) COctetCursor::FailAt(offset, error);
    return {m_text, false, false};
}

void CFastInfosetReader::RemoveReturns(Literal& literal) {
    if (literal.text.find('\r') == std::string_view::npos) return;
    if (literal.isInDocument) m_text.assign(literal.text);
    m_text.erase(std::remove(m_text.begin(), m_text.end(), '\r'), m_text.end());
    literal.text = m_text;
    literal.isInDocument = false;
}

CReaderText CFastInfosetReader::NewEntry(const Literal& literal) {
    CReaderText entry{literal.text, false, IsShortBlank(literal.text)};
    if (!literal.isInDocument) Share(entry);
    return entry;
}

/// Moves the text to where elements may share it.
void CFastInfosetReader::Share(CReaderText& entry) {
    CArena& arena = m_tree.SharedCharacters();
    arena.AppendToRun(entry.text.data(), entry.text.size());
    entry.text = std::string_view(arena.CommitRun(), entry.text.size());
    entry.isShared = true;
}

void CFastInfosetReader::Grow(std::size_t length) {
    if (length > m_growthLeft) m_in.Fail("Table entries stand for more text than the limit allows");
    m_growthLeft -= length;
}

// --- vocabularies -----------------------------------------------------------------------------------------

/// A string of UTF-8 octets without index.
std::string_view CFastInfosetReader::OctetString() {
    const unsigned octet = m_in.Peek();
    if (octet >= 0x80) m_in.Fail("Reserved bits are set in a length");
    m_in.Octet();
    return IdentifyingLiteral(octet, false);
}

std::string_view CFastInfosetReader::VocabularyName() {
    const std::size_t offset = m_in.Offset();
    const std::string_view text = OctetString();
    if (!IsXmlName(text, false)) COctetCursor::FailAt(offset, kNotName);
    return text;
}

void CFastInfosetReader::InitialVocabulary() {
    const std::size_t offset = m_in.Offset();
    const unsigned first = m_in.Octet();
    const unsigned components = first << 8 | m_in.Octet();
    if (first >= 0x20) COctetCursor::FailAt(offset, kReserved);
    const auto sequence = [&](unsigned bit, auto readItem) {
        if ((components & bit) == 0) return;
        for (std::uint32_t left = m_in.SequenceLength(); left > 0; --left)
            readItem();
    };
    const auto encoded = [&](Use use) {
        const unsigned octet = m_in.Peek();
        if (octet >= 0x40) m_in.Fail(kReserved);
        m_in.Octet();
        return EncodedString(octet, Start::Bit3, use);
    };
    const auto strings = [&](CReaderStrings& table, std::string_view text) {
        AddToTable(table.entries, table.GetNumber(text));
    };
    const auto count = [](std::size_t& number) { number = std::min(number + 1, kMaxReaderTable); };
    if ((components & 0x1000) != 0) ExternalVocabulary();
    sequence(0x0800, [&] {
        if (m_tables.alphabets.size() >= 256) m_in.Fail("There are too many restricted alphabets");
        m_tables.alphabets.emplace_back(OctetString());
    });
    sequence(0x0400, [&] { OctetString(); });  // algorithms; those that are not built in are not known
    sequence(0x0200, [&] { strings(m_tables.prefixes, VocabularyName()); });
    sequence(0x0100, [&] { strings(m_tables.namespaces, OctetString()); });
    sequence(0x0080, [&] { AddToTable(m_tables.localNames, VocabularyName()); });
    sequence(0x0040, [&] { VocabularyName(), count(m_tables.otherNames); });
    sequence(0x0020, [&] { OctetString(), count(m_tables.otherUris); });
    sequence(0x0010, [&] { AddToTable(m_tables.values, NewEntry(encoded(Use::Value))); });
    sequence(0x0008, [&] { AddToTable(m_tables.texts, NewEntry(encoded(Use::Text))); });
    sequence(0x0004, [&] { encoded(Use::Other), count(m_tables.otherTexts); });
    sequence(0x0002, [&] { AddToTable(m_tables.elementNames, Surrogate()); });
    sequence(0x0001, [&] { AddToTable(m_tables.attributeNames, Surrogate()); });
}

void CFastInfosetReader::ExternalVocabulary() {
    const std::size_t offset = m_in.Offset();
    const std::string uri(OctetString());
    const auto vocabulary = m_context.FindVocabulary(uri);
    if (vocabulary == nullptr)
        COctetCursor::FailAt(offset, FormatString("Unknown external vocabulary [%s]", uri.c_str()));
    m_tables.Add(vocabulary);
    const auto add = [&](std::vector<CReaderName>& table, const CFastInfosetVocabulary::Name& name) {
        const auto number = [&](CReaderStrings& strings, const std::string& text) {
            return text.empty() ? 0 : strings.GetNumber(m_tables.Keep(text));
        };
        AddToTable(table,
                   MakeName(number(m_tables.prefixes, name.prefix),
                            number(m_tables.namespaces, name.namespaceUri), m_tables.Keep(name.localName)));
    };
    for (const auto& name : vocabulary->GetElementNames())
        add(m_tables.elementNames, name);
    for (const auto& name : vocabulary->GetAttributeNames())
        add(m_tables.attributeNames, name);
}

CReaderName CFastInfosetReader::Surrogate() {
    const unsigned parts = m_in.Peek();
    if (parts > 3 || parts == 2) m_in.Fail(kReserved);
    m_in.Octet();
    const auto string = [&](const CReaderStrings& strings) {
        return strings.entries[SurrogateIndex(strings.entries.size())];
    };
    const std::uint32_t prefix = (parts & 2) != 0 ? string(m_tables.prefixes) : 0;
    const std::uint32_t uri = (parts & 1) != 0 ? string(m_tables.namespaces) : 0;
    return MakeName(prefix, uri, m_tables.localNames[SurrogateIndex(m_tables.localNames.size())]);
}

std::uint32_t CFastInfosetReader::SurrogateIndex(std::size_t size) {
    const std::size_t offset = m_in.Offset();
    const unsigned octet = m_in.Octet();
    if (octet >= 0x80) COctetCursor::FailAt(offset, "Reserved bits are set in an index");
    const std::uint32_t index = m_in.IndexOnBit2(octet);
    if (index >= size) COctetCursor::FailAt(offset, kNoEntry);
    return index;
}

}  // namespace KvXmlLib16::internal
