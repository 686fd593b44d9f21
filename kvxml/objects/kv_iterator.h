/// Iterator of the typed collections, for range-for and the standard algorithms.
///
///     for (CTrkType* track : *gpx->GetTrk()) ...
///     std::find_if(items.begin(), items.end(), [](const CTrkType* track) { ... });
#pragma once

#include <cstddef>
#include <iterator>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_object_base.h"

namespace KvXmlLib16 {

namespace internal {

/// One item of a collection and its neighbours; owned by the collection.
struct CCollectionNode {
    CSmartPtr<CXmlObjectBase> item;
    CCollectionNode* next = nullptr;
    CCollectionNode* previous = nullptr;
};

}  // namespace internal

/// Goes through the items of a collection in both directions; stays valid until its item is removed, or as
/// long as the collection for the end. Dereferencing gives the item, which stays owned by the collection.
template <class T>
class CKvIterator {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = T*;
    using difference_type = std::ptrdiff_t;
    using pointer = T* const*;
    using reference = T*;

    /// Belongs to no collection; it equals the end of any.
    CKvIterator() noexcept = default;
    /// For collections: a null `node` is the end; `tail` is where the collection keeps its last node.
    CKvIterator(internal::CCollectionNode* node, internal::CCollectionNode* const* tail) noexcept
        : m_node(node), m_tail(tail) {}

    T* operator*() const noexcept { return static_cast<T*>(m_node->item.Get()); }
    T* operator->() const noexcept { return **this; }
    CKvIterator& operator++() noexcept {
        m_node = m_node->next;
        return *this;
    }
    /// From the end to the last item.
    CKvIterator& operator--() noexcept {
        m_node = m_node == nullptr ? *m_tail : m_node->previous;
        return *this;
    }
    CKvIterator operator++(int) noexcept {
        const CKvIterator before = *this;
        ++*this;
        return before;
    }
    CKvIterator operator--(int) noexcept {
        const CKvIterator before = *this;
        --*this;
        return before;
    }
    friend bool operator==(CKvIterator a, CKvIterator b) noexcept { return a.m_node == b.m_node; }
    friend bool operator!=(CKvIterator a, CKvIterator b) noexcept { return a.m_node != b.m_node; }

private:
    internal::CCollectionNode* m_node = nullptr;
    internal::CCollectionNode* const* m_tail = nullptr;
};

}  // namespace KvXmlLib16
