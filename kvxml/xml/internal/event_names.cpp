#include "kvxml/xml/internal/event_names.h"

#include "kvxml/xml/internal/tree_limits.h"
#include "kvxml/xml/internal/xml_events.h"

namespace KvXmlLib16::internal {

namespace {

constexpr const char* kTooManyNames = "the document has more distinct names than the limit of %llu";

}  // namespace

CEventNames::CEventNames(std::uint64_t maxNames) : m_maxNames(maxNames) {
    m_none.nextElement = m_none.otherElement = m_none.firstAttribute = m_none.nextAttribute = &m_none;
}

CEventName* CEventNames::Find(const char* raw) {
    const auto found = m_byRaw.find(raw);
    if (found != m_byRaw.end()) return found->second;
    if (m_names.size() >= m_maxNames) throw CTreeLimitPassed{kTooManyNames, m_maxNames};
    CEventName& name = m_names.emplace_back();
    name.nextElement = name.otherElement = name.firstAttribute = name.nextAttribute = &m_none;
    name.raw = raw;
    const std::string_view text = name.raw;
    const std::size_t first = text.find(IXmlEvents::kSeparator);
    if (first == std::string_view::npos) {
        name.localName = text;
    } else {
        const std::size_t second = text.find(IXmlEvents::kSeparator, first + 1);
        name.namespaceUri = text.substr(0, first);
        name.localName =
            text.substr(first + 1, second == std::string_view::npos ? second : second - first - 1);
        if (second != std::string_view::npos) name.prefix = text.substr(second + 1);
    }
    m_byRaw.emplace(text, &name);
    return &name;
}

const std::string* CEventNames::Keep(const char* text) {
    const auto found = m_byText.find(text);
    if (found != m_byText.end()) return found->second;
    if (m_texts.size() >= m_maxNames) throw CTreeLimitPassed{kTooManyNames, m_maxNames};
    const std::string* const kept = &m_texts.emplace_back(text);
    m_byText.emplace(*kept, kept);
    return kept;
}

}  // namespace KvXmlLib16::internal
