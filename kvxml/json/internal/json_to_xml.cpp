#include "kvxml/json/internal/json_to_xml.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::string_view kDeclaration = "xmlns";
// Pairwise comparison is faster up to here.
constexpr std::size_t kFewAttributes = 8;
// Bytes of a name or value that a message shows.
constexpr std::size_t kShown = 200;

bool IsDeclaration(std::string_view name) noexcept {
    return name.substr(0, kDeclaration.size()) == kDeclaration &&
           (name.size() == kDeclaration.size() || name[kDeclaration.size()] == ':');
}

std::string Shorten(std::string_view text) {
    if (text.size() <= kShown) return std::string(text);
    std::size_t length = kShown;
    while (length > 0 && (text[length] & '\xC0') == '\x80')
        --length;
    return std::string(text.substr(0, length)) + "...";
}

/// For values that are all right but for what XML does with some characters of them.
bool NeedsCleaning(std::string_view value, bool isAttribute) noexcept {
    return std::any_of(value.begin(), value.end(), [isAttribute](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte == 0xEF || (byte < 0x20 && character != '\n' && (character != '\t' || isAttribute));
    });
}

bool IsNonCharacter(std::string_view text) noexcept {
    return text.size() >= 3 && text[1] == '\xBF' && (text[2] == '\xBE' || text[2] == '\xBF');
}

}  // namespace

CJsonToXmlBase::CJsonToXmlBase(const CJsonMapping& mapping)
    : m_mapping(mapping), m_names(mapping.namespaces) {}

// --- where we are -----------------------------------------------------------------------------------------

std::string CJsonToXmlBase::GetErrorPath() const {
    std::string path = "$";
    for (std::size_t i = 0; i < m_depth; ++i) {
        const Frame& frame = m_frames[i];
        if (frame.container == Container::Array) {
            path += '[' + std::to_string(frame.items == 0 ? 0 : frame.items - 1) + ']';
        } else if (frame.hasMember) {
            path += '.' + Shorten(frame.name);
        }
    }
    return path;
}

CJsonToXmlBase::Frame& CJsonToXmlBase::Push(Container container) {
    if (m_depth == m_frames.size()) m_frames.emplace_back();
    m_top = &m_frames[m_depth++];
    m_top->container = container;
    m_top->isStarted = false;
    m_top->hasMember = false;
    m_top->items = 0;
    return *m_top;
}

void CJsonToXmlBase::PushArray() {
    if (IsEmpty() || m_top->container == Container::Array) {
        if (!IsEmpty() && m_mapping.countItems) Item();
        Throw("JSON Array has no Name.");
    }
    const std::string_view name = m_top->name;
    Push(Container::Array).name = name;
}

void CJsonToXmlBase::Name(const CJsonText& name) {
    Frame& frame = Top();
    if (name.text.empty()) Throw("JSON item has an empty Name.");
    if (name.isStable) {
        frame.name = name.text;
    } else {
        frame.ownName = name.text;
        frame.name = frame.ownName;
    }
    frame.hasMember = true;
    m_member = Member::Element;
    if (m_mapping.roundTrip != JsonRoundTrip_None) {
        if (name.text.front() == '@') m_member = Member::Attribute;
        if (name.text == "#text") m_member = Member::Text;
    }
}

std::string_view CJsonToXmlBase::BeginItem() {
    if (IsEmpty()) Throw("JSON Value has no Name.");
    const bool isItem = m_top->container == Container::Array;
    if (isItem && m_mapping.countItems) Item();
    const bool isRoot = isItem ? m_depth == 2 : m_top->container == Container::Document;
    if (isRoot && m_roots++ != 0) Throw("JSON text has more than one root element.");
    return m_top->name;
}

void CJsonToXmlBase::CheckDocument() const {
    if (m_roots == 0) Throw("JSON text has no root element.");
}

// --- attributes -------------------------------------------------------------------------------------------

void CJsonToXmlBase::AddAttribute(std::string_view value, bool isSpecial) {
    const std::string_view name = m_top->name.substr(1);
    if (m_top->isStarted) {
        if (m_mapping.allowLate) throw CLateJsonAttribute{};
        ThrowValue(value, true, "Attributes must be added before elements");
    }
    if (isSpecial) value = Clean(value, true);
    if (value.size() > UINT32_MAX) ThrowValue(value, true, "The value is too long");
    if (!m_names.IsName(name)) ThrowName(name, true);
    Attribute attribute{};
    attribute.isDeclaration = m_names.HasNamespaces() && IsDeclaration(name);
    attribute.name = m_pending.size();
    attribute.nameLength = name.size();
    m_pending += name;
    m_pending += '\0';
    attribute.value = m_pending.size();
    attribute.valueLength = value.size();
    m_pending += value;
    m_pending += '\0';
    attribute.expanded = attribute.name;
    m_attributes.push_back(attribute);
    if (!attribute.isDeclaration) return;
    std::string_view prefix, uri;
    DeclarationOf(attribute, prefix, uri);
    if (!m_names.Declare(prefix, uri)) ThrowValue(value, true, "The namespace can not be declared so");
}

void CJsonToXmlBase::AddNullAttribute() {
    const std::string_view name = m_top->name.substr(1);
    if (m_names.HasNamespaces() && IsDeclaration(name)) {
        AddAttribute({}, false);
    } else if (!m_names.IsName(name)) {
        ThrowName(name, true);
    }
}

void CJsonToXmlBase::DeclarationOf(const Attribute& attribute, std::string_view& prefix,
                                   std::string_view& uri) const {
    prefix = std::string_view(m_pending).substr(attribute.name, attribute.nameLength);
    prefix.remove_prefix(std::min(prefix.size(), kDeclaration.size() + 1));
    uri = std::string_view(m_pending).substr(attribute.value, attribute.valueLength);
}

const CJsonNames::Name& CJsonToXmlBase::PrepareStart(std::string_view elementName) {
    const CJsonNames::Name* const name = m_names.Element(elementName);
    if (name == nullptr) ThrowName(elementName, false);
    m_pairs.clear();
    if (!m_attributes.empty()) {
        if (m_names.HasNamespaces()) {
            for (Attribute& attribute : m_attributes) {
                const std::string_view literal(m_pending.data() + attribute.name, attribute.nameLength);
                if (attribute.isDeclaration || literal.find(':') == literal.npos) continue;
                const std::string copy(literal);
                attribute.expanded = m_pending.size();
                if (!m_names.ExpandAttribute(copy, m_pending)) ThrowName(copy, true);
                m_pending += '\0';
            }
        }
        if (m_attributes.size() > 1) CheckDuplicates();
        for (const Attribute& attribute : m_attributes) {
            if (attribute.isDeclaration && !m_mapping.deliverLiteral) continue;
            m_pairs.push_back(m_pending.data() +
                              (m_mapping.deliverLiteral ? attribute.name : attribute.expanded));
            m_pairs.push_back(m_pending.data() + attribute.value);
        }
    }
    m_pairs.push_back(nullptr);
    return *name;
}

void CJsonToXmlBase::CheckDuplicates() {
    const auto nameOf = [this](const Attribute& attribute) {
        return std::string_view(m_pending.data() + attribute.expanded);
    };
    if (m_attributes.size() <= kFewAttributes) {
        for (std::size_t i = 1; i < m_attributes.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j)
                if (nameOf(m_attributes[i]) == nameOf(m_attributes[j]))
                    ThrowName(nameOf(m_attributes[i]), true);
        }
        return;
    }
    m_sorted.clear();
    for (const Attribute& attribute : m_attributes)
        m_sorted.push_back(nameOf(attribute));
    std::sort(m_sorted.begin(), m_sorted.end());
    const auto twice = std::adjacent_find(m_sorted.begin(), m_sorted.end());
    if (twice != m_sorted.end()) ThrowName(*twice, true);
}

// --- values -----------------------------------------------------------------------------------------------

void CJsonToXmlBase::HoldText(std::string_view text, bool isStable, bool isSpecial) {
    if (!isStable) text = m_ownHeldText = text;
    m_hasHeldText = true;
    m_isHeldTextSpecial = isSpecial;
    m_heldText = text;
}

std::string_view CJsonToXmlBase::Clean(std::string_view value, bool isAttribute) {
    if (!NeedsCleaning(value, isAttribute)) return value;
    const bool keepsBlanks = isAttribute && m_mapping.exactStrings;
    m_clean.clear();
    for (std::size_t i = 0; i < value.size(); ++i) {
        const auto byte = static_cast<unsigned char>(value[i]);
        unsigned forbidden = 0;
        if (byte == 0xEF && IsNonCharacter(value.substr(i))) {
            forbidden = value[i + 2] == '\xBE' ? 0xFFFE : 0xFFFF;
        } else if (byte >= 0x20 || byte == '\n' || (byte == '\t' && !isAttribute) ||
                   (keepsBlanks && (byte == '\t' || byte == '\r'))) {
            m_clean += value[i];
            continue;
        } else if (byte == '\t') {
            m_clean += ' ';
            continue;
        } else if (byte == '\r') {
            continue;
        } else {
            forbidden = byte;
        }
        ThrowValue(
            value, isAttribute,
            FormatString("The text contains the character 0x%02X, which XML can not represent", forbidden));
    }
    return m_clean;
}

// --- errors -----------------------------------------------------------------------------------------------

void CJsonToXmlBase::RefuseContainer(const char* shown) {
    ThrowValue(shown, IsAttribute(), "Only strings, numbers, true, false and null can be values here");
}

void CJsonToXmlBase::ThrowValue(std::string_view value, bool isAttribute, const std::string& reason) const {
    ThrowValue(value, isAttribute, CKvValidationException(reason, GetErrorPath()));
}

void CJsonToXmlBase::ThrowValue(std::string_view value, bool isAttribute, const CKvException& reason) const {
    throw CKvInvalidStateException(
        FormatString(isAttribute ? "Failed to convert value '%s' to Attribute string value in XML."
                                 : "Failed to convert value '%s' to Element string value in XML.",
                     Shorten(value).c_str()),
        reason);
}

void CJsonToXmlBase::ThrowName(std::string_view name, bool isAttribute) const {
    if (m_mapping.allowLate && name.find(':') != name.npos) throw CLateJsonAttribute{};
    throw CKvValidationException(
        FormatString(isAttribute ? "Failed to convert name '%s' to Attribute name in XML."
                                 : "Failed to convert name '%s' to Element name in XML.",
                     Shorten(name).c_str()),
        GetErrorPath());
}

void CJsonToXmlBase::Throw(const char* message) const {
    throw CKvValidationException(message, GetErrorPath());
}

}  // namespace KvXmlLib16::internal
