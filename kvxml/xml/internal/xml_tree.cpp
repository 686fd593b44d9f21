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

void CXmlTree::SetPrefix(std::string_view prefix, std::string_view uri) {
    m_prefixOf.clear();
    m_prefixes[std::string(prefix)] = uri;
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
