#include "kvxml/objects/xml_collection.h"

#include <algorithm>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/internal/substitution.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

namespace {

constexpr std::uint32_t kFirstBlock = 8;
constexpr std::uint32_t kLargestBlock = 4096;

}  // namespace

CXmlCollection::CXmlCollection() = default;

CXmlCollection::CXmlCollection(const char* elementName, const char* ns, int minOccurs, int maxOccurs)
    : CXmlCollectionBase(elementName, ns, minOccurs, maxOccurs) {}

CXmlCollection::CXmlCollection(const CXmlCollection& other) : CXmlCollectionBase(other) {
    CopyItems(other);
}

CXmlCollection& CXmlCollection::operator=(const CXmlCollection& other) {
    if (this != &other) {
        while (m_tail != nullptr)
            FreeNode(m_tail);
        CXmlCollectionBase::operator=(other);
        CopyItems(other);
    }
    return *this;
}

CXmlCollection::CXmlCollection(CXmlCollection&& other) noexcept : CXmlCollectionBase(std::move(other)) {
    Swap(other);
}

CXmlCollection& CXmlCollection::operator=(CXmlCollection&& other) noexcept {
    if (this != &other) {
        while (m_tail != nullptr)
            FreeNode(m_tail);
        CXmlCollectionBase::operator=(std::move(other));
        Swap(other);
    }
    return *this;
}

void CXmlCollection::Swap(CXmlCollection& other) noexcept {
    std::swap(m_head, other.m_head);
    std::swap(m_tail, other.m_tail);
    std::swap(m_count, other.m_count);
    std::swap(m_lastNode, other.m_lastNode);
    std::swap(m_lastIndex, other.m_lastIndex);
    std::swap(m_block, other.m_block);
    std::swap(m_blockUsed, other.m_blockUsed);
    std::swap(m_blockSize, other.m_blockSize);
    std::swap(m_free, other.m_free);
    m_isSubstitutable = other.m_isSubstitutable;
    ++m_removals;
    ++other.m_removals;
}

CXmlCollection::~CXmlCollection() {
    // In the reverse order of making, which costs the heap least.
    for (CNode* node = m_tail; node != nullptr; node = node->previous)
        node->item.Reset();
    while (m_block != nullptr)
        delete[] std::exchange(m_block, m_block->previous);
}

void CXmlCollection::CopyItems(const CXmlCollection& other) {
    m_isSubstitutable = other.m_isSubstitutable;
    for (const CNode* node = other.m_head; node != nullptr; node = node->next) {
        CNode* copy = NewNode();
        copy->item = node->item;
        copy->previous = m_tail;
        (m_tail == nullptr ? m_head : m_tail->next) = copy;
        m_tail = copy;
        ++m_count;
    }
}

// --- nodes -------------------------------------------------------------------------------------------------

CXmlCollection::CNode* CXmlCollection::NewNode() {
    if (m_free != nullptr) {
        CNode* node = std::exchange(m_free, m_free->next);
        node->next = nullptr;
        return node;
    }
    if (m_blockUsed == m_blockSize) {
        const std::uint32_t size = m_blockSize == 0 ? kFirstBlock : std::min(m_blockSize * 2, kLargestBlock);
        auto* block = new CNode[size];
        block->previous = std::exchange(m_block, block);
        m_blockSize = size;
        m_blockUsed = 1;
    }
    return &m_block[m_blockUsed++];
}

void CXmlCollection::FreeNode(CNode* node) noexcept {
    (node->previous == nullptr ? m_head : node->previous->next) = node->next;
    (node->next == nullptr ? m_tail : node->next->previous) = node->previous;
    --m_count;
    ++m_removals;
    m_lastNode = nullptr;
    const CSmartPtr<CXmlObjectBase> item = std::move(node->item);  // released when the list is whole again
    node->previous = nullptr;
    node->next = m_free;
    m_free = node;
}

CXmlCollection::CNode* CXmlCollection::GetNodeAtIndex(int index) const {
    CheckItemIndex(index);
    CNode* node = m_head;
    std::int32_t at = 0;
    const auto distance = [index](std::int32_t from) { return from > index ? from - index : index - from; };
    if (distance(m_count - 1) < distance(at)) {
        node = m_tail;
        at = m_count - 1;
    }
    if (m_lastNode != nullptr && distance(m_lastIndex) < distance(at)) {
        node = m_lastNode;
        at = m_lastIndex;
    }
    for (; at < index; ++at)
        node = node->next;
    for (; at > index; --at)
        node = node->previous;
    m_lastNode = node;
    m_lastIndex = index;
    return node;
}

CXmlCollection::CNode* CXmlCollection::GetNodeForItem(const CXmlObjectBase* item) const {
    for (CNode* node = m_head; node != nullptr; node = node->next) {
        if (node->item.Get() == item) return node;
    }
    throw CKvInvalidParamException("The object was not found in the collection");
}

// --- changes -----------------------------------------------------------------------------------------------

void CXmlCollection::Insert(CNode* before, CSmartPtr<CXmlObjectBase> added) {
    CXmlObjectBase* const item = added.Get();
    if (item == nullptr) throw CKvInvalidParamException("An item of a collection may not be NULL");
    if (HasListeners()) {
        const CSmartPtr<CXmlObjectBase> place(before == nullptr ? nullptr : before->item);
        const std::uint32_t removals = m_removals;
        FireOnCollectionAdd(item);
        if (m_removals != removals && !HasNode(before, place.Get())) before = nullptr;
    }
    CNode* node = NewNode();
    node->item = std::move(added);
    node->next = before;
    node->previous = before == nullptr ? m_tail : before->previous;
    (node->previous == nullptr ? m_head : node->previous->next) = node;
    (before == nullptr ? m_tail : before->previous) = node;
    ++m_count;
    if (before != nullptr) m_lastNode = nullptr;
    if (!HasListeners()) return;
    const CSmartPtr<CXmlObjectBase> keep(item);  // a listener may remove it again
    FireOnCollectionAddComplete(item);
    FireOnCollectionChange();
}

void CXmlCollection::AddAfterItem(const CXmlObjectBase* existing, CXmlObjectBase* item) {
    Insert(existing == nullptr ? m_head : GetNodeForItem(existing)->next, item);
}

void CXmlCollection::AddBeforeItem(const CXmlObjectBase* existing, CXmlObjectBase* item) {
    Insert(GetNodeForItem(existing), item);
}

void CXmlCollection::AddItemAt(int index, CXmlObjectBase* item) {
    if (index < 0 || index > m_count) throw CKvInvalidParamException("Index out of range");
    Insert(index == m_count ? nullptr : GetNodeAtIndex(index), item);
}

// Nodes are reused, so a node alone does not tell whether it still is the one with `item`.
bool CXmlCollection::HasNode(const CNode* node, const CXmlObjectBase* item) const noexcept {
    const CNode* at = m_head;
    while (at != nullptr && at != node)
        at = at->next;
    return at != nullptr && at->item.Get() == item;
}

void CXmlCollection::RemoveNodeAt(CNode* node, std::int32_t index) {
    if (HasListeners()) {
        const CSmartPtr<CXmlObjectBase> item(node->item);
        const std::uint32_t removals = m_removals;
        FireOnCollectionRemove(index);
        if (m_removals != removals && !HasNode(node, item.Get())) return;
    }
    FreeNode(node);
    FireOnCollectionRemoveComplete(index);
    FireOnCollectionChange();
}

void CXmlCollection::RemoveNode(CNode* node) {
    std::int32_t index = 0;
    for (const CNode* at = m_head; at != node; at = at->next) {
        if (at == nullptr) throw CKvInvalidParamException("The object was not found in the collection");
        ++index;
    }
    RemoveNodeAt(node, index);
}

void CXmlCollection::Remove(int index) {
    RemoveNodeAt(GetNodeAtIndex(index), index);
}

void CXmlCollection::Clear() {
    if (HasListeners()) {
        // What listeners add meanwhile stays.
        for (std::int32_t left = m_count; left > 0 && m_head != nullptr; --left)
            RemoveNodeAt(m_head, 0);
    } else {
        while (m_tail != nullptr)
            FreeNode(m_tail);
    }
}

// --- reading and writing -----------------------------------------------------------------------------------

void CXmlCollection::SetItemElementName(CXmlObjectBase* item) const {
    if (m_isSubstitutable && !GetElementNameView(*item).empty()) return;
    CXmlCollectionBase::SetElementName(item, GetElementNameView());
}

void CXmlCollection::ToXml_Int(CXmlWriter* writer, bool, const char*, const CSerializationContext& context,
                               bool) const {
    const char* const ns = GetItemNamespaceText();
    for (const CNode* node = m_head; node != nullptr; node = node->next) {
        if (m_isSubstitutable) {
            internal::CSubstitution::Write(*node->item.Get(), GetElementNameView(), ns, writer, context);
        } else {
            CXmlObjectBase::ToXml_Int(node->item.Get(), writer, false, ns, context, false);
        }
    }
}

void CXmlCollection::AttributesToXml_Int(CXmlWriter* writer, const CSerializationContext& context) const {
    if (m_head != nullptr) CXmlObjectBase::AttributesToXml_Int(m_head->item.Get(), writer, context);
}

CSmartPtr<CXmlObjectBase> CXmlCollection::NewItemLike(const CXmlObjectBase&) const {
    return nullptr;
}

CSmartPtr<CXmlObjectBase> CXmlCollection::NewSubstituteLike(const CXmlObjectBase& item,
                                                            CreateSubstitute create) const {
    return internal::CSubstitution::MakeLike(create, item, GetElementNameView(), GetItemNamespace());
}

CXmlElement* CXmlCollection::ReadItems(CXmlElement* cursor, const CSerializationContext& context,
                                       CreateItem create) {
    const internal::CXmlName* matched = nullptr;
    while (cursor != nullptr) {
        if (cursor->GetName() != matched) {
            if (!internal::DoesElementNameMatch(context, *cursor, GetElementNameView(), GetItemNamespace()))
                break;
            matched = cursor->GetName();
        }
        auto item = CSmartPtr<CXmlObjectBase>::Adopt(PrepareNew(create()));
        CXmlObjectBase::FromXml_Int(item.Get(), cursor, cursor->GetFirstElement(), context, false);
        Insert(nullptr, std::move(item));
        cursor = cursor->GetNextSiblingElement();
    }
    return cursor;
}

CXmlElement* CXmlCollection::ReadTaglessItems(CXmlElement* parent, CXmlElement* cursor,
                                              const CSerializationContext& context, CreateItem create) {
    const bool isRetried = BeginRead().isRetried;
    while (cursor != nullptr) {
        auto item = CSmartPtr<CXmlObjectBase>::Adopt(PrepareNew(create()));
        if (isRetried) MarkRetried(item.Get());
        CXmlElement* const after = CXmlObjectBase::FromXml_Int(item.Get(), parent, cursor, context, true);
        if (IsIncomplete(*item)) SetIncomplete();
        if (after == cursor || IsIncomplete(*item)) break;
        Insert(nullptr, std::move(item));
        cursor = after;
    }
    return cursor;
}

CXmlElement* CXmlCollection::ReadSubstitutes(CXmlElement* cursor, const CSerializationContext& context,
                                             CreateSubstitute create) {
    for (; cursor != nullptr; cursor = cursor->GetNextSiblingElement()) {
        const bool isNamed =
            internal::DoesElementNameMatch(context, *cursor, GetElementNameView(), GetItemNamespace());
        CSmartPtr<CXmlObjectBase> item = internal::CSubstitution::Make(create, *cursor, isNamed);
        if (item == nullptr) {
            if (isNamed) internal::CSubstitution::ThrowNone(GetElementNameView(), *cursor);
            break;
        }
        CXmlObjectBase::FromXml_Int(item.Get(), cursor, cursor->GetFirstElement(), context, false);
        Insert(nullptr, std::move(item));
    }
    return cursor;
}

}  // namespace KvXmlLib16
