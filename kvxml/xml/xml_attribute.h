/// Attribute of an element of a parsed document.
///
///     for (const CXmlAttribute* attribute : element->GetAttributes())
///         std::cout << attribute->GetLocalName() << '=' << attribute->GetValueView() << '\n';
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "kvxml/export.h"

namespace KvXmlLib16 {

class CXmlElement;

namespace internal {
class CXmlTree;
class CXmlTreeBuilder;
struct CXmlName;
struct CXmlTextBox;
}  // namespace internal

/// Name and value of an attribute. Made and owned by its document; it cannot be copied.
///
/// References and views stay good as long as the attribute does: until the document is loaded again or
/// destroyed, or the element filter discards the element. Const functions may prepare what they return, so
/// one thread at a time uses a document.
class KVXML_EXPORT CXmlAttribute final {
public:
    CXmlAttribute(const CXmlAttribute&) = delete;
    CXmlAttribute& operator=(const CXmlAttribute&) = delete;

    const std::string& GetLocalName() const noexcept;
    /// Empty for an attribute in no namespace, which is every one without a prefix.
    const std::string& GetNamespaceURI() const noexcept;
    const std::string& GetValue() const;
    /// The value without the string that `GetValue` makes on its first call.
    std::string_view GetValueView() const noexcept;
    /// The element that carries the attribute.
    const CXmlElement* GetElement() const noexcept;
    /// Path of the element, "/", the prefix of the attribute's namespace (where it has one), "@" and the
    /// local name: "/a/b[2]/x:@id".
    std::string GetXPath() const;

    /// True for the attributes that say something about the document instead of carrying data: "type",
    /// "schemaLocation", "noNamespaceSchemaLocation" and "xmlns" of the XML Schema instance namespace and of
    /// the namespace of xmlns attributes.
    bool IsNamespaceAttribute() const noexcept;
    /// True for "nil" of these two namespaces.
    bool IsNilAttribute() const noexcept;

    /// For the library: the name as the document keeps it.
    const internal::CXmlName* GetName() const noexcept { return m_name; }

private:
    friend class internal::CXmlTree;
    friend class internal::CXmlTreeBuilder;

    CXmlAttribute() = default;

    union Value {
        const char* characters;
        internal::CXmlTextBox* box;
    };

    // Attributes lie after their element, one after the other; the index leads back to it.
    const internal::CXmlName* m_name;
    mutable Value m_value;
    std::uint32_t m_length;  // of the characters
    std::uint32_t m_index : 31;
    mutable std::uint32_t m_isBoxed : 1;
};

/// The attributes of an element in document order; looks like a constant vector of pointers. A light value,
/// good as long as the element.
class CXmlAttributeList {
public:
    /// Random access; what it points to is a `CXmlAttribute*`.
    class const_iterator {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = CXmlAttribute*;
        using difference_type = std::ptrdiff_t;
        using pointer = CXmlAttribute* const*;
        using reference = CXmlAttribute*;

        const_iterator() noexcept = default;
        explicit const_iterator(CXmlAttribute* attribute) noexcept : m_attribute(attribute) {}

        CXmlAttribute* operator*() const noexcept { return m_attribute; }
        CXmlAttribute* operator[](difference_type n) const noexcept { return m_attribute + n; }
        const_iterator& operator++() noexcept { return *this += 1; }
        const_iterator& operator--() noexcept { return *this -= 1; }
        const_iterator operator++(int) noexcept {
            const const_iterator before = *this;
            ++m_attribute;
            return before;
        }
        const_iterator operator--(int) noexcept {
            const const_iterator before = *this;
            --m_attribute;
            return before;
        }
        const_iterator& operator+=(difference_type n) noexcept {
            m_attribute += n;
            return *this;
        }
        const_iterator& operator-=(difference_type n) noexcept {
            m_attribute -= n;
            return *this;
        }
        friend const_iterator operator+(const_iterator i, difference_type n) noexcept { return i += n; }
        friend const_iterator operator+(difference_type n, const_iterator i) noexcept { return i += n; }
        friend const_iterator operator-(const_iterator i, difference_type n) noexcept { return i -= n; }
        friend difference_type operator-(const_iterator a, const_iterator b) noexcept {
            return a.m_attribute - b.m_attribute;
        }
        friend bool operator==(const_iterator a, const_iterator b) noexcept {
            return a.m_attribute == b.m_attribute;
        }
        friend bool operator!=(const_iterator a, const_iterator b) noexcept { return !(a == b); }
        friend bool operator<(const_iterator a, const_iterator b) noexcept {
            return a.m_attribute < b.m_attribute;
        }
        friend bool operator>(const_iterator a, const_iterator b) noexcept { return b < a; }
        friend bool operator<=(const_iterator a, const_iterator b) noexcept { return !(b < a); }
        friend bool operator>=(const_iterator a, const_iterator b) noexcept { return !(a < b); }

    private:
        CXmlAttribute* m_attribute = nullptr;
    };
    using iterator = const_iterator;
    using value_type = CXmlAttribute*;
    using size_type = std::size_t;

    CXmlAttributeList(CXmlAttribute* first, std::size_t count) noexcept : m_first(first), m_count(count) {}

    std::size_t size() const noexcept { return m_count; }
    bool empty() const noexcept { return m_count == 0; }
    CXmlAttribute* operator[](std::size_t index) const noexcept { return m_first + index; }
    /// CKvInvalidParamException "Index out of range" beyond the last.
    KVXML_EXPORT CXmlAttribute* at(std::size_t index) const;
    CXmlAttribute* front() const noexcept { return m_first; }
    CXmlAttribute* back() const noexcept { return m_first + (m_count - 1); }
    const_iterator begin() const noexcept { return const_iterator(m_first); }
    const_iterator end() const noexcept { return const_iterator(m_first + m_count); }

private:
    CXmlAttribute* m_first;
    std::size_t m_count;
};

}  // namespace KvXmlLib16
