#include "kvxml/xml/xml_element.h"

#include <type_traits>
#include <vector>

#include "kvxml/xml/internal/xml_tree.h"

namespace KvXmlLib16 {

static_assert(std::is_trivially_destructible_v<CXmlElement>);
static_assert(sizeof(void*) != 8 || sizeof(CXmlElement) == 48);
static_assert(alignof(CXmlAttribute) == alignof(CXmlElement));

namespace {

using internal::CXmlName;

const std::string kEmpty;

const std::string& PrefixOf(const CXmlName& name) {
    return name.uri.empty() ? kEmpty : name.tree->FindPrefix(name.uri);
}

/// True when both names read the same in a path. Different namespaces may share a prefix, namely none.
bool HaveSameQualifiedName(const CXmlName& a, const CXmlName& b) {
    return &a == &b || (a.local == b.local && PrefixOf(a) == PrefixOf(b));
}

/// Adds the element's step: "/", name, and position where there are several.
void AppendStep(std::string& path, const CXmlElement& element) {
    const CXmlName& name = *element.GetName();
    const std::string& prefix = PrefixOf(name);
    path += '/';
    if (!prefix.empty()) path.append(prefix) += ':';
    path += name.local;
    if (element.GetParentElm() == nullptr) return;
    std::size_t count = 0;
    std::size_t position = 0;
    const CXmlName* compared = nullptr;  // siblings of one name tend to follow each other
    bool isSame = false;
    for (const CXmlElement* sibling = element.GetParentElm()->GetFirstElement(); sibling != nullptr;
         sibling = sibling->GetNextSiblingElement()) {
        if (sibling->GetName() != compared) {
            compared = sibling->GetName();
            isSame = HaveSameQualifiedName(*compared, name);
        }
        if (!isSame) continue;
        ++count;
        if (sibling == &element) position = count;
        if (position != 0 && count > 1) break;
    }
    if (count > 1) path.append(1, '[').append(std::to_string(position)) += ']';
}

}  // namespace

const CXmlDocument* CXmlElement::GetDocument() const noexcept {
    return m_name->tree->GetDocument();
}

const std::string& CXmlElement::GetLocalName() const noexcept {
    return m_name->local;
}

const std::string& CXmlElement::GetNamespaceURI() const noexcept {
    return m_name->uri;
}

const std::string& CXmlElement::GetText() const {
    return m_name->tree->BoxText(*this);
}

/// The text of any kind but characters.
std::string_view CXmlElement::GetJoinedText() const {
    const internal::CXmlTextRun* run = nullptr;
    switch (m_textKind) {
        case TextKind_None:
            return std::string_view();
        case TextKind_SharedRuns:
            run = m_text.sharedRuns;
            break;
        case TextKind_Runs:
            run = m_text.runs;
            break;
        default:
            break;
    }
    if (run != nullptr && run->previous == nullptr && run->repeat == 1) {
        return std::string_view(run->characters, run->length);
    }
    return GetText();
}

bool CXmlElement::IsTextBlank() const noexcept {
    const auto isBlank = [](std::string_view text) {
        return text.find_first_not_of(" \t\n\r") == std::string_view::npos;
    };
    switch (m_textKind) {
        case TextKind_None:
        case TextKind_SharedRuns:
            return true;
        case TextKind_Characters:
            return isBlank(std::string_view(m_text.characters, m_textLength));
        case TextKind_Runs:
            for (const internal::CXmlTextRun* run = m_text.runs; run != nullptr; run = run->previous) {
                if (!isBlank(std::string_view(run->characters, run->length))) return false;
            }
            return true;
        default:
            return isBlank(m_text.box->text);
    }
}

const std::string& CXmlElement::GetAttribute(std::string_view localName,
                                             std::string_view namespaceUri) const {
    for (const CXmlAttribute* attribute : GetAttributes()) {
        const CXmlName& name = *attribute->GetName();
        if (name.local == localName && name.uri == namespaceUri) return attribute->GetValue();
    }
    return kEmpty;
}

const std::string* CXmlElement::FindNamespace(std::string_view prefix) const {
    return m_name->tree->FindNamespace(*this, prefix);
}

std::string CXmlElement::GetXPath() const {
    std::vector<const CXmlElement*> line;
    for (const CXmlElement* element = this; element != nullptr; element = element->GetParentElm())
        line.push_back(element);
    std::string path;
    for (auto element = line.rbegin(); element != line.rend(); ++element)
        AppendStep(path, **element);
    return path;
}

}  // namespace KvXmlLib16
