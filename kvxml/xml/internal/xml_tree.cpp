#include "kvxml/xml/internal/xml_tree.h"

#include <algorithm>
#include <utility>

namespace KvXmlLib16::internal {

namespace {

const std::string kEmpty;

/// Writes the runs from the last one back to the first.
std::string Join(const CXmlTextRun* last) {
    std::size_t length = 0;
    for (const CXmlTextRun* run = last; run != nullptr; run = run->previous)
        length += run->length * static_cast<std::size_t>(run->repeat);
    std::string text(length, '\0');
    char* end = text.data() + length;
    for (const CXmlTextRun* run = last; run != nullptr; run = run->previous) {
        for (std::uint64_t i = 0; i < run->repeat; ++i) {
            end -= run->length;
            std::memcpy(end, run->characters, run->length);
        }
    }
    return text;
}

bool IsWithin(const CXmlElement* inner, const CXmlElement& outer) noexcept {
    while (inner != nullptr && inner != &outer)
        inner = inner->GetParentElm();
    return inner != nullptr;
}

}  // namespace

const std::string& CXmlTree::SetPrefix(std::string_view prefix, std::string_view uri) {
    const auto found = m_prefixes.find(prefix);
    if (found != m_prefixes.end() && found->second == uri) return found->first;
    m_prefixOf.clear();
    const auto entered = m_prefixes.insert_or_assign(std::string(prefix), std::string(uri)).first;
    return entered->first;
}

const std::string* CXmlTree::FindNamespace(const CXmlElement& element, std::string_view prefix) const {
    const std::string* const undeclared = prefix.empty() ? &kEmpty : nullptr;
    const auto found = m_prefixes.find(prefix);
    if (found == m_prefixes.end()) return undeclared;
    if (!m_hasInnerDeclarations) return &found->second;
    for (const CXmlElement* at = &element; at != nullptr; at = at->GetParentElm()) {
        if (at->m_declares == 0) continue;
        const auto* const count = reinterpret_cast<const std::size_t*>(at) - 1;
        const auto* const end = reinterpret_cast<const CXmlBinding*>(count);
        for (const CXmlBinding* binding = end - *count; binding != end; ++binding) {
            if (binding->prefix == &found->first) return &binding->space->uri;
        }
    }
    return undeclared;
}

const std::string& CXmlTree::FindPrefix(std::string_view uri) {
    if (m_prefixOf.empty()) {
        std::map<std::string_view, const std::string*> prefixOf;
        for (const auto& [prefix, bound] : m_prefixes)
            prefixOf.emplace(bound, &prefix);  // the first one stays
        m_prefixOf = std::move(prefixOf);
    }
    const auto found = m_prefixOf.find(uri);
    return found == m_prefixOf.end() ? kEmpty : *found->second;
}

CXmlTextBox* CXmlTree::NewBox(const CXmlElement& element) {
    m_boxes.push_back(std::make_unique<CXmlTextBox>(CXmlTextBox{{}, &element}));
    return m_boxes.back().get();
}

const std::string& CXmlTree::BoxText(const CXmlElement& element) {
    if (element.m_textKind == CXmlElement::TextKind_None) return kEmpty;
    if (element.m_textKind == CXmlElement::TextKind_Box) return element.m_text.box->text;
    std::string text;
    switch (element.m_textKind) {
        case CXmlElement::TextKind_Characters:
            text.assign(element.m_text.characters, element.m_textLength);
            break;
        case CXmlElement::TextKind_SharedRuns:
            text = Join(element.m_text.sharedRuns);
            break;
        default:
            text = Join(element.m_text.runs);
            break;
    }
    CXmlTextBox* const box = NewBox(element);
    box->text = std::move(text);
    element.m_text.box = box;
    element.m_textKind = CXmlElement::TextKind_Box;
    return box->text;
}

const std::string& CXmlTree::BoxValue(const CXmlAttribute& attribute) {
    if (attribute.m_isBoxed != 0) return attribute.m_value.box->text;
    if (attribute.m_length == 0) return kEmpty;
    std::string text(attribute.GetValueView());
    CXmlTextBox* const box = NewBox(*attribute.GetElement());
    box->text = std::move(text);
    attribute.m_value.box = box;
    attribute.m_isBoxed = 1;
    return box->text;
}

void CXmlTree::DropBoxes(std::size_t first, const CXmlElement& element) noexcept {
    if (first == m_boxes.size()) return;
    const auto begin = m_boxes.begin() + static_cast<std::ptrdiff_t>(first);
    m_boxes.erase(std::remove_if(begin, m_boxes.end(),
                                 [&](const auto& box) { return IsWithin(box->element, element); }),
                  m_boxes.end());
}

}  // namespace KvXmlLib16::internal
