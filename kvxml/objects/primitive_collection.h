/// What the collections of primitive values share: storage, access and changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "kvxml/export.h"
#include "kvxml/objects/item_array.h"
#include "kvxml/objects/xml_type_collection.h"

namespace KvXmlLib16 {

/// Ordered list of values of type `T`. Every added value is checked against the facets of the collection.
///
/// Listeners hear of every change: add, the change itself, add complete (or remove and remove complete),
/// change. The item that goes with an add is a `const T*` to the value, good during the call. An index is
/// checked, and a value against its facets, only after the first notification; what is refused leaves the
/// list unchanged.
///
/// A copy has the same values, facets and listeners; moving takes values and listeners away from the other
/// collection and notifies nobody.
///
/// A listener may change the collection: a value whose place a listener has removed is appended, one that was
/// to be appended still is, and a removal whose index a listener has made invalid does nothing more.
template <class T>
class KVXML_EXPORT CPrimitiveCollection : public CXmlTypeCollection {
public:
    using value_type = T;
    using reference = const T&;
    using const_reference = const T&;
    using const_iterator = const T*;
    using iterator = const_iterator;

    ~CPrimitiveCollection() override;

    std::int32_t GetCount() const override { return static_cast<std::int32_t>(m_items.Size()); }
    /// Removes one value after the other with Remove(0), so that listeners hear of each. What listeners add
    /// meanwhile stays.
    void Clear() override;
    /// CKvInvalidParamException "Index %d is out of range, use 0 - %d".
    void Remove(int index) override;

    /// Appends. Errors as AddAt.
    void Add(T value) { InsertItem(GetCount(), std::move(value)); }
    void push_back(T value) { Add(std::move(value)); }
    /// 0 <= index <= count, else CKvInvalidParamException "Index out of range"; CKvInvalidValueException when
    /// the value violates a facet.
    void AddAt(int index, T value) { InsertItem(index, std::move(value)); }
    /// CKvInvalidParamException "Index %d is out of range, use 0 - %d".
    T Item(int index) const {
        CheckItemIndex(index);
        return m_items[static_cast<std::size_t>(index)];
    }

    /// The values are contiguous. Every change makes iterators invalid.
    const_iterator begin() const noexcept { return m_items.begin(); }
    const_iterator end() const noexcept { return m_items.end(); }
    const_iterator cbegin() const noexcept { return begin(); }
    const_iterator cend() const noexcept { return end(); }
    std::size_t size() const noexcept { return m_items.Size(); }
    bool empty() const noexcept { return m_items.Size() == 0; }

    /// The value, good until the next change; CKvInvalidParamException for a bad index and an empty
    /// collection.
    const T& operator[](std::size_t index) const {
        if (index >= size()) CheckItemIndex(ToItemIndex(index));
        return m_items[index];
    }
    const T& front() const { return (*this)[0]; }
    const T& back() const { return (*this)[empty() ? 0 : size() - 1]; }

protected:
    using CXmlTypeCollection::CXmlTypeCollection;
    CPrimitiveCollection(const CPrimitiveCollection&);
    CPrimitiveCollection& operator=(const CPrimitiveCollection&);
    CPrimitiveCollection(CPrimitiveCollection&&) noexcept;
    CPrimitiveCollection& operator=(CPrimitiveCollection&&) noexcept;

    /// All adding comes here. `lexical` is the text that the value was read from, for patterns; empty: none.
    void InsertItem(int index, T value, std::string_view lexical = {});
    /// Appends a value that was read from `text`.
    void AppendRead(T value, std::string_view text);

private:
    friend class internal::CObjectGraph;

    internal::CItemArray<T> m_items;
};

/// The collection of one primitive kind. The conversions are those of CConversions for the kind.
template <ItemType kind, class T>
class KVXML_EXPORT CPrimitiveKindCollection : public CPrimitiveCollection<T> {
public:
    using WhitespaceRule = CWhitespaceUtils::WhitespaceRule;
    static constexpr WhitespaceRule kDefaultRule = kind == ItemType_string
                                                       ? CWhitespaceUtils::WhitespaceRule_Preserve
                                                       : CWhitespaceUtils::WhitespaceRule_Collapse;

    /// `maxOccurs` -1: unbounded. The rest are the facets, none of which is set by default.
    CPrimitiveKindCollection(const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                             const char* pattern = nullptr, std::int32_t minLength = -1,
                             std::int32_t maxLength = -1, const char* minInclusive = nullptr,
                             const char* maxInclusive = nullptr, const char* minExclusive = nullptr,
                             const char* maxExclusive = nullptr, std::int32_t length = -1,
                             std::int32_t totalDigits = -1, std::int32_t fractionDigits = -1,
                             WhitespaceRule rule = kDefaultRule, const char* enumeration = nullptr)
        : CPrimitiveCollection<T>(kind, elementName, ns, minOccurs, maxOccurs, pattern, minLength, maxLength,
                                  minInclusive, maxInclusive, minExclusive, maxExclusive, length, totalDigits,
                                  fractionDigits, rule, enumeration) {}
    CPrimitiveKindCollection(const CPrimitiveKindCollection&);
    CPrimitiveKindCollection& operator=(const CPrimitiveKindCollection&);
    CPrimitiveKindCollection(CPrimitiveKindCollection&&) noexcept;
    CPrimitiveKindCollection& operator=(CPrimitiveKindCollection&&) noexcept;
    ~CPrimitiveKindCollection() override;

protected:
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;
    void AddFromString(std::string_view text) override;
};

}  // namespace KvXmlLib16
