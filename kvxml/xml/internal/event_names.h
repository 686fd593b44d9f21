/// The names of a document that is read as events.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "kvxml/base/internal/document_name.h"

namespace KvXmlLib16::internal {

/// A name, split once, with what came after it last time, which is what mostly comes next time.
struct CEventName : CDocumentName {
    std::string raw;  ///< as the parser writes it
    CEventName* nextElement = nullptr;
    CEventName* otherElement = nullptr;
    CEventName* firstAttribute = nullptr;
    CEventName* nextAttribute = nullptr;
    /// For readers: the open element that has had children of this name, and how many.
    mutable std::uint64_t parent = 0;
    mutable std::uint64_t count = 0;

    bool Is(const char* text) const noexcept { return std::strcmp(raw.c_str(), text) == 0; }
};

/// Keeps each distinct name once, for the whole document.
class CEventNames {
public:
    /// `maxNames`: beyond, CTreeLimitPassed.
    explicit CEventNames(std::uint64_t maxNames);
    CEventNames(const CEventNames&) = delete;
    CEventNames& operator=(const CEventNames&) = delete;

    /// The name of the element that starts after the last one asked for; its attributes are asked for next.
    const CEventName* Element(const char* raw) {
        CEventName& last = *m_last;
        if (!last.nextElement->Is(raw)) {
            std::swap(last.nextElement, last.otherElement);
            if (!last.nextElement->Is(raw)) last.nextElement = Find(raw);
        }
        m_last = last.nextElement;
        m_attribute = &m_last->firstAttribute;
        return m_last;
    }
    const CEventName* Attribute(const char* raw) {
        CEventName*& expected = *m_attribute;
        if (!expected->Is(raw)) expected = Find(raw);
        m_attribute = &expected->nextAttribute;
        return expected;
    }
    /// Texts of declarations, which recur. They count as names.
    const std::string* Keep(const char* text);

private:
    CEventName* Find(const char* raw);

    const std::uint64_t m_maxNames;
    CEventName m_none;  // stands where nothing is expected; no name has its empty text
    CEventName* m_last = &m_none;
    CEventName** m_attribute = &m_none.firstAttribute;
    std::deque<CEventName> m_names;
    std::unordered_map<std::string_view, CEventName*> m_byRaw;
    std::deque<std::string> m_texts;
    std::unordered_map<std::string_view, const std::string*> m_byText;
};

}  // namespace KvXmlLib16::internal
