#include "kvxml/objects/xml_object_base.h"

#include <cstring>
#include <new>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/objects/xml_collection_base.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/xml_name.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

using internal::OrEmpty;

namespace {

// Objects deleted while another deletion of this thread is deep already wait here, so that chains of
// objects do not recurse per link. The list belongs to the outermost deletion: a thread's variables with
// destructors are gone before objects of static storage are.
struct DeletionState {
    static constexpr int kMaxDepth = 64;
    int depth = 0;
    std::vector<const CXmlObjectBase*>* waiting = nullptr;

    bool Defer(const CXmlObjectBase* object) noexcept {
        try {
            waiting->push_back(object);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
};

thread_local constinit DeletionState t_deletion;

}  // namespace

namespace internal {

bool IsNamespaceValid(std::string_view ns, std::string_view allowed, std::string_view targetNs) noexcept {
    const auto accepts = [&](std::string_view token) {
        if (token == "##any") return true;
        if (token == "##other") return ns != targetNs;
        if (token == "##local") return ns.empty();
        if (token == "##targetNamespace") return ns == targetNs;
        return ns == allowed || ns.empty();
    };
    const std::size_t blank = allowed.find(' ');
    if (accepts(allowed.substr(0, blank))) return true;
    return blank != std::string_view::npos && accepts(std::string_view());
}

void RequireTargetNamespace(std::string_view allowed, const char* targetNs) {
    const std::string_view first = allowed.substr(0, allowed.find(' '));
    if (targetNs == nullptr && (first == "##other" || first == "##targetNamespace"))
        throw CKvInvalidNamespaceException("Target Namespace must have a value", std::string());
}

bool DoesElementNameMatch(const CSerializationContext& context, const CXmlElement& element,
                          std::string_view name, std::string_view ns) noexcept {
    const CXmlName& own = *element.GetName();
    return own.local == name && (context.GetIgnoreNamespaces() || own.uri == ns);
}

}  // namespace internal

// --- life ------------------------------------------------------------------------------------------------

CXmlObjectBase::CXmlObjectBase() noexcept = default;

CXmlObjectBase::CXmlObjectBase(const CXmlObjectBase& other) noexcept
    : m_elementName(other.m_elementName), m_references(other.m_references.load(std::memory_order_relaxed)) {}

CXmlObjectBase& CXmlObjectBase::operator=(const CXmlObjectBase& other) noexcept {
    m_elementName = other.m_elementName;
    m_references.store(other.m_references.load(std::memory_order_relaxed), std::memory_order_relaxed);
    return *this;
}

// The other object keeps its name.
// NOLINTNEXTLINE(performance-move-constructor-init)
CXmlObjectBase::CXmlObjectBase(CXmlObjectBase&& other) noexcept : m_elementName(other.m_elementName) {}

CXmlObjectBase& CXmlObjectBase::operator=(CXmlObjectBase&& other) noexcept {
    m_elementName = other.m_elementName;
    return *this;
}

CXmlObjectBase::~CXmlObjectBase() = default;

void CXmlObjectBase::DeleteThis() const noexcept {
    DeletionState& state = t_deletion;
    if (state.depth >= DeletionState::kMaxDepth && state.Defer(this)) return;
    if (state.depth > 0) {
        ++state.depth;
        delete this;
        --state.depth;
        return;
    }
    // Only the outermost deletion empties the list; what it deletes may add more.
    std::vector<const CXmlObjectBase*> waiting;
    state = {1, &waiting};
    delete this;
    while (!waiting.empty()) {
        const CXmlObjectBase* next = waiting.back();
        waiting.pop_back();
        delete next;
    }
    state = {};
}

const CXmlObjectBase* CXmlObjectBase::GetBase() const {
    return const_cast<CXmlObjectBase*>(this)->GetBase();
}

void CXmlObjectBase::SetElementName(const char* name) {
    SetElementName(std::string_view(OrEmpty(name)));
}

void CXmlObjectBase::OnEvent(CXmlObjectBase*, MsgType, void*) {}

void CXmlObjectBase::AttributesToXml_Int(CXmlWriter*, const CSerializationContext&) const {}

// --- events ----------------------------------------------------------------------------------------------

namespace {

void FireIndexEvent(IEventSink* sink, CXmlCollectionBase* collection, IEventSink::MsgType type,
                    std::int32_t index) {
    std::int32_t copy = index;
    sink->OnEvent(collection->GetBase(), type, index == -1 ? nullptr : &copy);
}

}  // namespace

void CXmlObjectBase::FireOnCollectionChangeEvent(IEventSink* sink, CXmlCollectionBase* collection) {
    sink->OnEvent(collection->GetBase(), MsgType_Change, nullptr);
}

void CXmlObjectBase::FireOnCollectionAddEvent(IEventSink* sink, CXmlCollectionBase* collection, void* item) {
    sink->OnEvent(collection->GetBase(), MsgType_Add, item);
}

void CXmlObjectBase::FireOnCollectionAddCompleteEvent(IEventSink* sink, CXmlCollectionBase* collection,
                                                      void* item) {
    sink->OnEvent(collection->GetBase(), MsgType_AddComplete, item);
}

void CXmlObjectBase::FireOnCollectionRemoveEvent(IEventSink* sink, CXmlCollectionBase* collection,
                                                 std::int32_t index) {
    FireIndexEvent(sink, collection, MsgType_Remove, index);
}

void CXmlObjectBase::FireOnCollectionRemoveCompleteEvent(IEventSink* sink, CXmlCollectionBase* collection,
                                                         std::int32_t index) {
    FireIndexEvent(sink, collection, MsgType_RemoveComplete, index);
}

// --- helpers for generated code --------------------------------------------------------------------------

namespace {

[[noreturn]] void ThrowChoiceAlreadySet(const char* format, const std::string& current) {
    throw CKvInvalidStateException(FormatString(format, current.c_str()));
}

// Shared by single and collection members: `isSet` holds on to the choice, its absence gives it up;
// `mayClaim` takes it when it is free.
void SelectChoiceMember(const char* name, bool isSet, bool mayClaim, std::string& current) {
    if (current != name) {
        if (!current.empty()) {
            if (isSet) {
                ThrowChoiceAlreadySet(
                    "The Property [%s] is already set. Only one element within this class bay be set at a "
                    "time",
                    current);
            }
        } else if (mayClaim) {
            current = name;
        }
    } else if (!isSet) {
        current.clear();
    }
}

}  // namespace

void CXmlObjectBase::Choice_SetElementValid(bool valid, const char* name, std::string& current) {
    if (!valid) {
        current.clear();
    } else if (current != OrEmpty(name)) {
        ThrowChoiceAlreadySet(
            "The Property %s is already set. Only one element within this class bay be set at a time",
            current);
    }
}

void CXmlObjectBase::Choice_SelectElement(const char* name, CXmlObjectBase* value, std::string& current) {
    SelectChoiceMember(OrEmpty(name), value != nullptr, true, current);
}

void CXmlObjectBase::Choice_CollectionChanged(const char* name, std::int32_t count, std::string& current) {
    SelectChoiceMember(OrEmpty(name), count != 0, count >= 1, current);
}

void CXmlObjectBase::Choice_Read_Collection(CXmlCollectionBase* collection, CXmlElement* parent,
                                            CXmlElement*& next, std::int32_t& count,
                                            const CSerializationContext& context) {
    if (count >= 1) return;
    CXmlElement* const after = FromXml_Int(collection, parent, next, context, false);
    if (after != next) {
        next = after;
        collection->ValidateCount(context);
        ++count;
    }
}

void CXmlObjectBase::Throw_IfPropertyIsNull(CXmlObjectBase* value, const char* propertyName) {
    if (value == nullptr) {
        throw CKvInvalidParamException(
            FormatString("The Property [%s] is mandatory, it may node be NULL", propertyName));
    }
}

void CXmlObjectBase::Throw_IfElementNameDiffers(CXmlObjectBase* value, const char* requiredName) {
    if (value == nullptr) return;
    const CXmlObjectBase* base = value->GetBase();
    if (base->GetElementNameView() != OrEmpty(requiredName)) {
        throw CKvInvalidParamException(
            FormatString("This property requires an element with the name %s the element being set has the "
                         "element name %s",
                         requiredName, base->GetElementNameText()));
    }
}

bool CXmlObjectBase::IsNamespaceValid(const char* ns, const char* allowed, const char* targetNs) const {
    return internal::IsNamespaceValid(OrEmpty(ns), OrEmpty(allowed), OrEmpty(targetNs));
}

void CXmlObjectBase::TestNamespace(const char* ns, const char* allowed, const char* targetNs) const {
    if (!IsNamespaceValid(ns, allowed, targetNs)) {
        throw CKvInvalidNamespaceException(
            FormatString(
                "Invalid namespace [%s]. The namespace must be one of [%s] where the target namespace "
                "is [%s].",
                OrEmpty(ns), OrEmpty(allowed), OrEmpty(targetNs)),
            std::string());
    }
}

bool CXmlObjectBase::DoesElementNameMatch(const CSerializationContext& context, const CXmlElement* element,
                                          const char* name, const char* ns) const {
    return element != nullptr &&
           internal::DoesElementNameMatch(context, *element, OrEmpty(name), OrEmpty(ns));
}

}  // namespace KvXmlLib16
