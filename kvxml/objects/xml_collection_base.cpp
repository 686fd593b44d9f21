#include "kvxml/objects/xml_collection_base.h"

#include <algorithm>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16 {

CXmlCollectionBase::CXmlCollectionBase() = default;

CXmlCollectionBase::CXmlCollectionBase(const char* elementName, const char* ns, int minOccurs, int maxOccurs)
    : m_namespace(ns == nullptr ? std::string_view() : ns), m_minOccurs(minOccurs), m_maxOccurs(maxOccurs) {
    SetElementName(elementName);
}

CXmlCollectionBase::CXmlCollectionBase(const CXmlCollectionBase& other)
    : CXmlObjectBase(other),
      m_namespace(other.m_namespace),
      m_listeners(other.m_listeners),
      m_minOccurs(other.m_minOccurs),
      m_maxOccurs(other.m_maxOccurs) {
    DropRemovedListeners();
}

CXmlCollectionBase& CXmlCollectionBase::operator=(const CXmlCollectionBase& other) {
    if (this == &other) return *this;
    CXmlObjectBase::operator=(other);
    m_namespace = other.m_namespace;
    m_listeners = other.m_listeners;
    m_minOccurs = other.m_minOccurs;
    m_maxOccurs = other.m_maxOccurs;
    return *this;
}

CXmlCollectionBase::CXmlCollectionBase(CXmlCollectionBase&& other) noexcept
    : CXmlObjectBase(std::move(other)),
      m_namespace(other.m_namespace),
      m_listeners(std::exchange(other.m_listeners, {})),
      m_minOccurs(other.m_minOccurs),
      m_maxOccurs(other.m_maxOccurs) {
    DropRemovedListeners();
}

CXmlCollectionBase& CXmlCollectionBase::operator=(CXmlCollectionBase&& other) noexcept {
    if (this == &other) return *this;
    CXmlObjectBase::operator=(std::move(other));
    m_namespace = other.m_namespace;
    m_listeners = std::exchange(other.m_listeners, {});
    m_minOccurs = other.m_minOccurs;
    m_maxOccurs = other.m_maxOccurs;
    return *this;
}

CXmlCollectionBase::~CXmlCollectionBase() = default;

std::string CXmlCollectionBase::GetTargetNamespace() const {
    throw CKvException(
        "CXmlCollectionBase::GetTargetNamespace Should not be used from within a Collection (program logic "
        "error)");
}

std::string CXmlCollectionBase::GetNamespace() const {
    return std::string();
}

void CXmlCollectionBase::ValidateCount(const CSerializationContext& context) const {
    if (context.GetIgnoreInvalidCollectionCounts()) return;
    const std::int32_t count = GetCount();
    if (m_maxOccurs != -1 && count > m_maxOccurs) {
        throw CKvValidationException(
            FormatString("The Maximum number of [%s] elements allowed in this collection is %d",
                         GetElementNameText(), m_maxOccurs),
            std::string());
    }
    if (count < m_minOccurs) {
        throw CKvValidationException(
            FormatString("The Minimum number of [%s] elements allowed in this collection is %d",
                         GetElementNameText(), m_minOccurs),
            std::string());
    }
}

bool CXmlCollectionBase::IsValidCount(const CSerializationContext& context) const {
    if (context.GetIgnoreInvalidCollectionCounts()) return true;
    const std::int32_t count = GetCount();
    return (m_maxOccurs == -1 || count <= m_maxOccurs) && count >= m_minOccurs;
}

void CXmlCollectionBase::AddEventListener(IEventSink* listener) {
    m_listeners.push_back(listener);
}

void CXmlCollectionBase::RemoveEventListener(IEventSink* listener) {
    const auto found = std::find(m_listeners.begin(), m_listeners.end(), listener);
    if (found == m_listeners.end()) return;
    if (m_eventsBeingTold > 0) {
        *found = nullptr;  // the places of the others stay as they are until all have been told
    } else {
        m_listeners.erase(found);
    }
}

void CXmlCollectionBase::DropRemovedListeners() {
    m_listeners.erase(std::remove(m_listeners.begin(), m_listeners.end(), nullptr), m_listeners.end());
}

/// Open as long as an event is told; events may be told within one another.
class CXmlCollectionBase::CListening {
public:
    explicit CListening(CXmlCollectionBase& collection) noexcept : m_collection(collection) {
        ++m_collection.m_eventsBeingTold;
    }
    CListening(const CListening&) = delete;
    CListening& operator=(const CListening&) = delete;
    ~CListening() {
        if (--m_collection.m_eventsBeingTold == 0) m_collection.DropRemovedListeners();
    }

private:
    CXmlCollectionBase& m_collection;
};

template <class Fire>
void CXmlCollectionBase::ForEachListener(Fire fire) {
    if (m_listeners.empty()) return;
    const CListening listening(*this);
    // By index: a listener may add or remove listeners while it is called.
    for (std::size_t i = 0; i < m_listeners.size(); ++i) {
        if (m_listeners[i] != nullptr) fire(m_listeners[i]);
    }
}

void CXmlCollectionBase::FireOnCollectionChange() {
    ForEachListener([this](IEventSink* listener) { FireOnCollectionChangeEvent(listener, this); });
}

void CXmlCollectionBase::FireOnCollectionAdd(void* item) {
    ForEachListener([=, this](IEventSink* listener) { FireOnCollectionAddEvent(listener, this, item); });
}

void CXmlCollectionBase::FireOnCollectionAddComplete(void* item) {
    ForEachListener(
        [=, this](IEventSink* listener) { FireOnCollectionAddCompleteEvent(listener, this, item); });
}

void CXmlCollectionBase::FireOnCollectionRemove(std::int32_t index) {
    ForEachListener([=, this](IEventSink* listener) { FireOnCollectionRemoveEvent(listener, this, index); });
}

void CXmlCollectionBase::FireOnCollectionRemoveComplete(std::int32_t index) {
    ForEachListener(
        [=, this](IEventSink* listener) { FireOnCollectionRemoveCompleteEvent(listener, this, index); });
}

void CXmlCollectionBase::CheckItemIndex(int index) const {
    const std::int32_t count = GetCount();
    if (index < 0 || index >= count) {
        throw CKvInvalidParamException(
            FormatString("Index %d is out of range, use 0 - %d", index, count - 1));
    }
}

}  // namespace KvXmlLib16
