#include "kvxml/schema/validation/internal/tree_feed.h"

#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/xml/internal/xml_name.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16::internal {

namespace {

/// The text without the markers of CDATA sections.
std::string WithoutMarkers(std::string_view text) {
    constexpr std::string_view kStart = "<![CDATA[";
    constexpr std::string_view kEnd = "]]>";
    std::string result;
    while (!text.empty()) {
        const std::size_t start = text.find(kStart);
        result += text.substr(0, start);
        if (start == text.npos) break;
        text.remove_prefix(start + kStart.size());
        const std::size_t end = text.find(kEnd);
        result += text.substr(0, end);
        text.remove_prefix(end == text.npos ? text.size() : end + kEnd.size());
    }
    return result;
}

}  // namespace

CTreeFeed::CTreeFeed(CElementValidator& elements, std::string_view name, const CJudgedDocument& document)
    : m_elements(elements), m_name(name), m_document(document), m_converts(!IsLocalUtf8()) {}

void CTreeFeed::Start(const CXmlElement& element) {
    StartPending();
    m_pending = &element;
    if (m_document.places != nullptr) StartPending();
}

void CTreeFeed::StartPending() {
    if (m_pending == nullptr) return;
    const CXmlElement& element = *std::exchange(m_pending, nullptr);
    m_element = &element;
    m_attributes.clear();
    m_converted.clear();
    for (const CXmlAttribute* attribute : element.GetAttributes()) {
        std::string_view value = attribute->GetValueView();
        if (m_converts) value = m_converted.emplace_back(LocalToUtf8(value));
        m_attributes.push_back({&attribute->GetName()->judged, value});
    }
    m_elements.Start(element.GetName()->judged, m_attributes.data(), m_attributes.size(), GetMark());
}

void CTreeFeed::End(const CXmlElement& element) {
    if (m_pending == &element && element.IsNullMember() &&
        m_elements.IsAbsentNull(element.GetName()->judged)) {
        m_pending = nullptr;
        return;
    }
    StartPending();
    m_element = &element;
    Text(element);
    if (element.IsNull()) m_elements.Null();
    m_elements.EndElement();
    m_element = element.GetParentElm();
}

void CTreeFeed::Text(const CXmlElement& element) {
    using Use = CElementValidator::TextUse;
    const Use use = m_elements.GetTextUse();
    if (use == Use::None || (use == Use::OnlyBlanks && element.IsTextBlank())) return;
    std::string_view text = element.GetTextView();
    if (text.empty()) return;
    std::string changed;
    if (m_converts) text = changed = LocalToUtf8(text);
    if (m_document.keepsCData && text.find("<![CDATA[") != text.npos) {
        changed = WithoutMarkers(text);
        text = changed;
        if (text.empty()) return;
    }
    m_elements.Text(text, true);
}

void CTreeFeed::Walk(const CXmlDocument& document, const CFaultList& report) {
    const CXmlElement* at = document.GetDocumentElement();
    if (at == nullptr) throw CKvException("Invalid or empty XML document");
    for (;;) {
        Start(*at);
        if (report.IsFull()) return;
        if (at->GetFirstElement() != nullptr) {
            at = at->GetFirstElement();
            continue;
        }
        for (;;) {
            End(*at);
            if (report.IsFull()) return;
            if (at->GetParentElm() == nullptr) return;
            if (at->GetNextSiblingElement() != nullptr) break;
            at = at->GetParentElm();
        }
        at = at->GetNextSiblingElement();
    }
}

bool CTreeFeed::Resolve(std::string_view prefix, std::string_view& namespaceUri) const {
    if (prefix == "xml") {
        namespaceUri = kXmlNamespace;
        return true;
    }
    const std::string* const uri = m_element->FindNamespace(prefix);
    if (uri == nullptr) return false;
    if (m_converts) m_uri = LocalToUtf8(*uri);
    namespaceUri = m_converts ? m_uri : *uri;
    return true;
}

void CTreeFeed::Locate(std::uint64_t mark, CFault& fault) const {
    fault.file = m_name;
    if (m_document.places != nullptr) m_document.places->Locate(mark, fault.line, fault.column);
}

std::string CTreeFeed::GetPath() const {
    if (m_element == nullptr) return std::string();
    return m_converts ? LocalToUtf8(m_element->GetXPath()) : m_element->GetXPath();
}

}  // namespace KvXmlLib16::internal
