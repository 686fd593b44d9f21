/// Repeated members of generated classes, as their accessors hand them out.
///
///     for (const CItemType& item : order.GetItem()) std::cout << item.GetSku() << '\n';
///     order.GetItem().Add().SetSku("a-1");
#pragma once

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

#include "kvxml/objects/primitive_collection.h"
#include "kvxml/objects/table_class.h"
#include "kvxml/objects/xml_collection.h"

namespace KvXmlLib16 {

namespace internal {
struct CTableMember;
}

/// The objects that a repeated member may hold, made when the first one is added. Owned by the object that
/// has the member; the collection is for generated code and the views below.
class KVXML_EXPORT CTableObjects final : public CXmlCollection {
public:
    CTableObjects(const CTableClass& owner, const CMember& member);
    ~CTableObjects() override;

    /// A new item of the member's class at the end. CKvInvalidStateException when the class is abstract.
    CTableClass& AddNew();
    /// CKvInvalidParamException for null, or an object of a class that the member does not admit.
    void Append(CXmlObjectBase* item);
    CXmlObjectBase& At(std::size_t index) const;
    CNode* First() const noexcept { return Head(); }
    CNode* const* LastPlace() const noexcept { return TailPlace(); }

protected:
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                             bool suppressChoiceError) override;
    CSmartPtr<CXmlObjectBase> NewItemLike(const CXmlObjectBase& item) const override;

private:
    const internal::CTableMember& m_member;
};

namespace internal {

/// Iterator that gives references instead of pointers.
template <class T>
class CObjectIterator {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = std::remove_const_t<T>;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    CObjectIterator() noexcept = default;
    CObjectIterator(CCollectionNode* node, CCollectionNode* const* tail) noexcept : m_at(node, tail) {}

    T& operator*() const noexcept { return **m_at; }
    T* operator->() const noexcept { return *m_at; }
    CObjectIterator& operator++() noexcept {
        ++m_at;
        return *this;
    }
    CObjectIterator operator++(int) noexcept { return CObjectIterator(m_at++); }
    CObjectIterator& operator--() noexcept {
        --m_at;
        return *this;
    }
    CObjectIterator operator--(int) noexcept { return CObjectIterator(m_at--); }
    friend bool operator==(const CObjectIterator& a, const CObjectIterator& b) noexcept {
        return a.m_at == b.m_at;
    }
    friend bool operator!=(const CObjectIterator& a, const CObjectIterator& b) noexcept { return !(a == b); }

private:
    explicit CObjectIterator(CKvIterator<std::remove_const_t<T>> at) noexcept : m_at(at) {}

    CKvIterator<std::remove_const_t<T>> m_at;
};

}  // namespace internal

/// A repeated member of objects. A view: it lives as long as the object that it came from. `const` classes
/// (`CObjectsOf<const CItemType>`) come from const objects and only look.
template <class T>
class CObjectsOf {
public:
    using value_type = std::remove_const_t<T>;
    using iterator = internal::CObjectIterator<T>;
    using const_iterator = internal::CObjectIterator<const T>;

    using Owner = std::conditional_t<std::is_const_v<T>, const CTableClass, CTableClass>;
    using Place = std::conditional_t<std::is_const_v<T>, const CSmartPtr<CXmlCollectionBase>,
                                     CSmartPtr<CXmlCollectionBase>>;
    CObjectsOf(Owner& owner, Place& place) noexcept : m_owner(owner), m_place(place) {}

    std::size_t size() const { return Items() == nullptr ? 0 : Items()->size(); }
    bool empty() const { return size() == 0; }
    /// CKvInvalidParamException for a bad index. Going through the indexes in order costs one step each.
    T& operator[](std::size_t index) const {
        return static_cast<T&>(Items() == nullptr ? Fail() : Items()->At(index));
    }
    T& front() const { return (*this)[0]; }
    T& back() const { return (*this)[empty() ? 0 : size() - 1]; }
    iterator begin() const noexcept {
        return Items() == nullptr ? iterator() : iterator(Items()->First(), Items()->LastPlace());
    }
    iterator end() const noexcept {
        return Items() == nullptr ? iterator() : iterator(nullptr, Items()->LastPlace());
    }

    /// A new item at the end.
    T& Add() const { return static_cast<T&>(Made().AddNew()); }
    /// Shares an object that there is.
    void Add(const CSmartPtr<T>& item) const { Made().Append(item.Get()); }
    void RemoveAt(std::size_t index) const {
        if (Items() == nullptr) Fail();
        Items()->Remove(static_cast<int>(index));
    }
    void Clear() const {
        if (Items() != nullptr) Items()->Clear();
    }

private:
    CTableObjects* Items() const noexcept { return static_cast<CTableObjects*>(m_place.Get()); }
    CTableObjects& Made() const { return static_cast<CTableObjects&>(m_owner.Made(m_place)); }
    [[noreturn]] CXmlObjectBase& Fail() const { m_owner.ThrowNotSet(&m_place); }

    Owner& m_owner;
    Place& m_place;
};

/// A repeated member of simple values, or a value of a list type. `T` is the type of the values; enumerations
/// are held as numbers, and `Stored` is std::int32_t for them. Const as above.
template <class T>
class CValuesOf {
public:
    using value_type = std::remove_const_t<T>;
    using Stored = std::conditional_t<std::is_enum_v<value_type>, std::int32_t, value_type>;
    using Collection = CPrimitiveCollection<Stored>;

    class iterator {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = std::remove_const_t<T>;
        using difference_type = std::ptrdiff_t;
        using pointer = const value_type*;
        using reference = std::conditional_t<std::is_enum_v<std::remove_const_t<T>>, std::remove_const_t<T>,
                                             const std::remove_const_t<T>&>;

        iterator() noexcept = default;
        explicit iterator(const Stored* at) noexcept : m_at(at) {}
        reference operator*() const noexcept { return static_cast<reference>(*m_at); }
        iterator& operator++() noexcept {
            ++m_at;
            return *this;
        }
        iterator operator++(int) noexcept { return iterator(m_at++); }
        iterator& operator--() noexcept {
            --m_at;
            return *this;
        }
        iterator& operator+=(difference_type n) noexcept {
            m_at += n;
            return *this;
        }
        friend iterator operator+(iterator a, difference_type n) noexcept { return a += n; }
        friend difference_type operator-(iterator a, iterator b) noexcept { return a.m_at - b.m_at; }
        friend bool operator==(iterator a, iterator b) noexcept { return a.m_at == b.m_at; }
        friend bool operator!=(iterator a, iterator b) noexcept { return a.m_at != b.m_at; }

    private:
        const Stored* m_at = nullptr;
    };
    using const_iterator = iterator;

    using Owner = std::conditional_t<std::is_const_v<T>, const CTableClass, CTableClass>;
    using Place = std::conditional_t<std::is_const_v<T>, const CSmartPtr<CXmlCollectionBase>,
                                     CSmartPtr<CXmlCollectionBase>>;
    CValuesOf(Owner& owner, Place& place) noexcept : m_owner(owner), m_place(place) {}

    std::size_t size() const noexcept { return Items() == nullptr ? 0 : Items()->size(); }
    bool empty() const noexcept { return size() == 0; }
    /// CKvInvalidParamException for a bad index.
    typename iterator::reference operator[](std::size_t index) const {
        if (Items() == nullptr) m_owner.ThrowNotSet(&m_place);
        return static_cast<typename iterator::reference>((*Items())[index]);
    }
    iterator begin() const noexcept { return Items() == nullptr ? iterator() : iterator(Items()->begin()); }
    iterator end() const noexcept { return Items() == nullptr ? iterator() : iterator(Items()->end()); }

    /// CKvInvalidValueException when the value violates a facet.
    void Add(value_type value) const {
        static_cast<Collection&>(m_owner.Made(m_place)).Add(static_cast<Stored>(std::move(value)));
    }
    void RemoveAt(std::size_t index) const {
        if (Items() == nullptr) m_owner.ThrowNotSet(&m_place);
        Items()->Remove(static_cast<int>(index));
    }
    void Clear() const {
        if (Items() != nullptr) Items()->Clear();
    }

private:
    Collection* Items() const noexcept { return static_cast<Collection*>(m_place.Get()); }

    Owner& m_owner;
    Place& m_place;
};

}  // namespace KvXmlLib16
