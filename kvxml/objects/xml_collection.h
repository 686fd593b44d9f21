/// Collections of objects of generated classes.
///
///     class CTrkTypeCol : public CXmlTypedCollection<CTrkType> { using
///     CXmlTypedCollection::CXmlTypedCollection; }; for (CTrkType* track : *gpx->GetTrk()) ...
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/export.h"
#include "kvxml/objects/kv_iterator.h"
#include "kvxml/objects/xml_collection_base.h"

namespace KvXmlLib16 {

/// Ordered list of shared objects. Every change notifies the listeners: add, the change itself, add complete
/// (or remove and remove complete), change. A failed operation leaves the list unchanged.
///
/// A listener may change the collection: an item whose place a listener has removed is appended, and an item
/// that a listener has removed already is not removed again.
/// Adding null throws CKvInvalidParamException. A copy shares the items and has the same listeners; moving
/// takes items and listeners away from the other collection, makes iterators of both invalid and notifies
/// nobody. For items of its own see Clone.
class KVXML_EXPORT CXmlCollection : public CXmlCollectionBase {
public:
    using CNode = internal::CCollectionNode;

    ~CXmlCollection() override;

    std::int32_t GetCount() const override { return m_count; }
    void Clear() override;
    void Remove(int index) override;

protected:
    CXmlCollection();
    CXmlCollection(const char* elementName, const char* ns, int minOccurs, int maxOccurs);
    CXmlCollection(const CXmlCollection& other);
    CXmlCollection& operator=(const CXmlCollection& other);
    CXmlCollection(CXmlCollection&& other) noexcept;
    CXmlCollection& operator=(CXmlCollection&& other) noexcept;

    /// For items that have no tag of their own: writes the attributes of the first, for a start tag can have
    /// each attribute but once. Items that were read have the same ones.
    void AttributesToXml_Int(CXmlWriter* writer, const CSerializationContext& context) const override;
    /// Writes the items one after the other as elements of the collection's namespace; an item whose class
    /// depends on its element and that goes by another name than the collection's, in its own.
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;

    void AppendItem(CXmlObjectBase* item) { Insert(nullptr, item); }
    void PrependItem(CXmlObjectBase* item) { Insert(m_head, item); }
    /// A null `existing` prepends; CKvInvalidParamException "The object was not found in the collection".
    void AddAfterItem(const CXmlObjectBase* existing, CXmlObjectBase* item);
    void AddBeforeItem(const CXmlObjectBase* existing, CXmlObjectBase* item);
    /// 0 <= index <= count, else CKvInvalidParamException "Index out of range".
    void AddItemAt(int index, CXmlObjectBase* item);
    void RemoveNode(CNode* node);
    /// CKvInvalidParamException "Index %d is out of range, use 0 - %d". Going through the indexes in order
    /// costs one step each.
    CNode* GetNodeAtIndex(int index) const;
    CNode* GetNodeForItem(const CXmlObjectBase* item) const;

    CNode* Head() const noexcept { return m_head; }
    /// Where the last node is kept, for iterators.
    CNode* const* TailPlace() const noexcept { return &m_tail; }

    /// Gives `item` the element name of the collection, under which it will be written.
    void SetItemElementName(CXmlObjectBase* item) const;

    /// Makes an empty item.
    using CreateItem = CXmlObjectBase* (*)();
    /// Makes the item for an element by its name or xsi:type; null when it is none of the collection's.
    using CreateSubstitute = CSmartPtr<CXmlObjectBase> (*)(CXmlElement* element);

    /// Reads the run of elements at `cursor` that have the collection's name and namespace into new items;
    /// returns the first other element.
    CXmlElement* ReadItems(CXmlElement* cursor, const CSerializationContext& context, CreateItem create);
    /// Reads items that have no tag of their own from the children of `parent`, as long as they find
    /// something.
    CXmlElement* ReadTaglessItems(CXmlElement* parent, CXmlElement* cursor,
                                  const CSerializationContext& context, CreateItem create);
    /// Reads the run of elements at `cursor` for which `create` makes an item. CKvValidationException "Failed
    /// to find a suitable substitution element for [%s]." when it makes none for one of the collection's
    /// name.
    CXmlElement* ReadSubstitutes(CXmlElement* cursor, const CSerializationContext& context,
                                 CreateSubstitute create);
    /// The items' classes depend on their elements.
    void SetIsSubstitutable() noexcept { m_isSubstitutable = true; }

    /// An empty item of the class of `item`; null when the collection does not know how to make one. Here it
    /// never does.
    virtual CSmartPtr<CXmlObjectBase> NewItemLike(const CXmlObjectBase& item) const;
    /// What the factory makes for an element as `item` is written.
    CSmartPtr<CXmlObjectBase> NewSubstituteLike(const CXmlObjectBase& item, CreateSubstitute create) const;

private:
    friend class internal::CObjectGraph;
    friend class internal::CTableAccess;
    friend class internal::CWriteFailure;

    void Swap(CXmlCollection& other) noexcept;
    void Insert(CNode* before, CSmartPtr<CXmlObjectBase> added);
    CNode* NewNode();
    void FreeNode(CNode* node) noexcept;
    void RemoveNodeAt(CNode* node, std::int32_t index);
    bool HasNode(const CNode* node, const CXmlObjectBase* item) const noexcept;
    void CopyItems(const CXmlCollection& other);

    CNode* m_head = nullptr;
    CNode* m_tail = nullptr;
    std::int32_t m_count = 0;
    // The node found last by index, so that a loop over indexes does not start over each time.
    mutable CNode* m_lastNode = nullptr;
    mutable std::int32_t m_lastIndex = 0;
    bool m_isSubstitutable = false;
    std::uint32_t m_removals = 0;  // counts up, so that changes made by listeners are noticed
    // Nodes come from blocks that grow with the collection and are reused through a free list. A block begins
    // with a node that is not used but to lead to the block before it.
    CNode* m_block = nullptr;
    std::uint32_t m_blockUsed = 0;
    std::uint32_t m_blockSize = 0;
    CNode* m_free = nullptr;
};

/// Typed collection of a generated class `T`, which needs a public default constructor unless the items are
/// made by a factory. Items that are added take the element name of the collection; with a factory, only
/// those that have none yet.
template <class T>
class CXmlTypedCollection : public CXmlCollection {
public:
    using iterator = CKvIterator<T>;
    using const_iterator = iterator;
    using value_type = T*;
    using reference = T*;
    using const_reference = T*;

    /// `maxOccurs` -1: unbounded. `itemsHaveTags`: false when the items' class stands for content without a
    /// tag of its own.
    CXmlTypedCollection(const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                        bool itemsHaveTags = true)
        : CXmlCollection(elementName, ns, minOccurs, maxOccurs), m_itemsHaveTags(itemsHaveTags) {}
    /// For items whose class depends on the element: `T` is their base, and the factory makes nothing else.
    CXmlTypedCollection(const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                        CreateSubstitute factory)
        : CXmlCollection(elementName, ns, minOccurs, maxOccurs), m_factory(factory) {
        SetIsSubstitutable();
    }

    iterator begin() const noexcept { return iterator(Head(), TailPlace()); }
    iterator end() const noexcept { return iterator(nullptr, TailPlace()); }
    const_iterator cbegin() const noexcept { return begin(); }
    const_iterator cend() const noexcept { return end(); }

    /// The item, which stays owned by the collection; CKvInvalidParamException for a bad index and an empty
    /// collection. Going through the indexes in order costs one step each.
    T* operator[](std::size_t index) const {
        return static_cast<T*>(GetNodeAtIndex(ToItemIndex(index))->item.Get());
    }
    T* front() const { return (*this)[0]; }
    T* back() const { return (*this)[empty() ? 0 : size() - 1]; }

    /// The item at `index`; CKvInvalidParamException for a bad index.
    CSmartPtr<T> Item(int index) const { return static_cast<T*>(GetNodeAtIndex(index)->item.Get()); }

    void Add(const CSmartPtr<T>& item) { AppendItem(Named(item)); }
    void push_back(const CSmartPtr<T>& item) { Add(item); }
    void AddAt(int index, const CSmartPtr<T>& item) { AddItemAt(index, Named(item)); }
    void Prepend(const CSmartPtr<T>& item) { PrependItem(Named(item)); }
    void AddAfter(const T* existing, const CSmartPtr<T>& item) { AddAfterItem(existing, Named(item)); }
    void AddBefore(const T* existing, const CSmartPtr<T>& item) { AddBeforeItem(existing, Named(item)); }
    /// Appends and returns a new item.
    CSmartPtr<T> CreateNew() {
        CSmartPtr<T> item(new T());
        Add(item);
        return item;
    }

protected:
    CXmlElement* FromXml_Int(CXmlElement* parent, CXmlElement* cursor, const CSerializationContext& context,
                             bool) override {
        if constexpr (!std::is_abstract_v<T> && std::is_default_constructible_v<T>) {
            const CreateItem create = [] { return static_cast<CXmlObjectBase*>(new T()); };
            if (m_factory == nullptr) {
                return m_itemsHaveTags ? ReadItems(cursor, context, create)
                                       : ReadTaglessItems(parent, cursor, context, create);
            }
        }
        return ReadSubstitutes(cursor, context, m_factory);
    }
    CSmartPtr<CXmlObjectBase> NewItemLike(const CXmlObjectBase& item) const override {
        if constexpr (!std::is_abstract_v<T> && std::is_default_constructible_v<T>) {
            if (m_factory == nullptr) return CSmartPtr<T>(new T());
        }
        return NewSubstituteLike(item, m_factory);
    }

private:
    T* Named(const CSmartPtr<T>& item) {
        if (item != nullptr && !GetElementNameView().empty()) SetItemElementName(item.Get());
        return item.Get();
    }

    bool m_itemsHaveTags = true;
    CreateSubstitute m_factory = nullptr;
};

}  // namespace KvXmlLib16
