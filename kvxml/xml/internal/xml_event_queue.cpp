#include "kvxml/xml/internal/xml_event_queue.h"

#include <cstring>
#include <utility>

#include "kvxml/xml/internal/expat_reader.h"
#include "kvxml/xml/internal/tree_limits.h"

namespace KvXmlLib16::internal {

void CXmlEventQueue::Clear() noexcept {
    m_events.clear();
    m_next = 0;
    m_characters.clear();
    m_attributes.clear();
    // Declarations of a start that is still to come are kept.
    m_declarations.erase(m_declarations.begin(),
                         m_declarations.end() - static_cast<std::ptrdiff_t>(m_newDeclarations));
}

CXmlEventQueue::Event& CXmlEventQueue::Add(XmlEvent kind) {
    Event& event = m_events.emplace_back();
    event.kind = kind;
    event.offset = m_parser->GetOffset();
    return event;
}

CXmlEventQueue::Text CXmlEventQueue::Keep(const char* text, std::size_t length) {
    const Text kept{m_characters.size(), length};
    m_characters.append(text, length);
    return kept;
}

void CXmlEventQueue::OnDeclarePrefix(const char* prefix, const char* uri) {
    m_declarations.push_back({m_names.Keep(prefix), m_names.Keep(uri)});
    ++m_newDeclarations;
}

void CXmlEventQueue::OnStart(const char* name, const char** attributes, int specified) {
    if (++m_depth > m_maxDepth) throw CTreeLimitPassed{kTooDeep, m_maxDepth};
    // The event comes last: what is beyond a limit leaves none.
    const CEventName* const known = m_names.Element(name);
    const std::size_t firstAttribute = m_attributes.size();
    for (int i = 0; attributes[i] != nullptr; i += 2) {
        m_attributes.push_back({m_names.Attribute(attributes[i]),
                                Keep(attributes[i + 1], std::strlen(attributes[i + 1])), i >= specified});
    }
    Event& event = Add(XmlEvent::StartElement);
    event.name = known;
    event.firstDeclaration = m_declarations.size() - m_newDeclarations;
    event.declarationCount = std::exchange(m_newDeclarations, 0);
    event.firstAttribute = firstAttribute;
    event.attributeCount = m_attributes.size() - firstAttribute;
}

void CXmlEventQueue::OnEnd() {
    --m_depth;
    Add(XmlEvent::EndElement);
}

void CXmlEventQueue::OnText(const char* text, std::size_t length) {
    const XmlEvent kind = m_isInCData ? XmlEvent::CData : XmlEvent::Text;
    if (!m_events.empty() && m_events.back().kind == kind) {
        // The last text stands at the end of the characters.
        m_events.back().text.length += length;
        m_characters.append(text, length);
        return;
    }
    Event& event = Add(kind);
    event.text = Keep(text, length);
}

void CXmlEventQueue::OnCData(bool isStart) {
    m_isInCData = isStart;
    if (!isStart) return;
    Event& event = Add(XmlEvent::CData);
    event.text = Keep("", 0);
}

void CXmlEventQueue::OnComment(const char* text) {
    Event& event = Add(XmlEvent::Comment);
    event.text = Keep(text, std::strlen(text));
}

void CXmlEventQueue::OnProcessingInstruction(const char* target, const char* data) {
    Event& event = Add(XmlEvent::ProcessingInstruction);
    event.target = Keep(target, std::strlen(target));
    event.text = Keep(data, std::strlen(data));
}

void CXmlEventQueue::OnDocumentType(const char* name) {
    Event& event = Add(XmlEvent::DocumentType);
    event.target = Keep(name, std::strlen(name));
}

}  // namespace KvXmlLib16::internal
