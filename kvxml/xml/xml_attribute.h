/// Attributes of the XML tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/xml/xml_name.h"

namespace KvXmlLib16 {

class CXmlElement;

namespace internal {
class CXmlTree;
}

/// One attribute of an element. Lives in its document's memory and dies with its element; all strings are in
/// the local code page and live as long as the attribute.
class KVXML_EXPORT CXmlAttribute final {
public:
    const std::string& GetLocalName() const noexcept { return m_name->local; }
    /// Empty for an attribute in no namespace.
    const std::string& GetNamespaceURI() const noexcept { return m_name->uri; }
    const std::string& GetValue() const;
    /// The value without making a string of it.
    std::string_view GetValueView() const noexcept {
        return m_isBox ? std::string_view(*m_box) : std::string_view(m_value, m_length);
    }
    /// Path of the element, "/", prefix, "@" and local name.
    std::string GetXPath() const;
    /// An attribute that carries no data of its own: xmlns, xsi:type, xsi:schemaLocation or
    /// xsi:noNamespaceSchemaLocation.
    bool IsNamespaceAttribute() const noexcept;
    /// xsi:nil.
    bool IsNilAttribute() const noexcept;

    const CXmlElement* GetElement() const noexcept { return m_element; }
    const internal::CXmlName* GetName() const noexcept { return m_name; }

private:
    friend class internal::CXmlTree;

    CXmlAttribute() noexcept : m_value(""), m_length(0), m_isBox(0) {}

    const CXmlElement* m_element = nullptr;
    const internal::CXmlName* m_name = nullptr;
    union {
        const char* m_value;
        const std::string* m_box;  // when GetValue has made a string
    };
    std::uint64_t m_length : 63;
    std::uint64_t m_isBox : 1;
};

/// The attributes of one element in document order: a view that behaves like a vector of pointers.
class CXmlAttributes {
public:
    class iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = CXmlAttribute*;
        using difference_type = std::ptrdiff_t;
        using pointer = CXmlAttribute* const*;
        using reference = CXmlAttribute*;

        iterator() noexcept = default;
        explicit iterator(CXmlAttribute* at) noexcept : m_at(at) {}
        CXmlAttribute* operator*() const noexcept { return m_at; }
        iterator& operator++() noexcept {
            ++m_at;
            return *this;
        }
        iterator operator++(int) noexcept { return iterator(m_at++); }
        friend bool operator==(iterator a, iterator b) noexcept { return a.m_at == b.m_at; }
        friend bool operator!=(iterator a, iterator b) noexcept { return a.m_at != b.m_at; }

    private:
        CXmlAttribute* m_at = nullptr;
    };

    CXmlAttributes(CXmlAttribute* first, std::size_t count) noexcept : m_first(first), m_count(count) {}

    std::size_t size() const noexcept { return m_count; }
    bool empty() const noexcept { return m_count == 0; }
    CXmlAttribute* operator[](std::size_t index) const noexcept { return m_first + index; }
    /// std::out_of_range for a bad index.
    CXmlAttribute* at(std::size_t index) const {
        if (index >= m_count) throw std::out_of_range("CXmlAttributes::at");
        return m_first + index;
    }
    iterator begin() const noexcept { return iterator(m_first); }
    iterator end() const noexcept { return iterator(m_first + m_count); }

private:
    CXmlAttribute* m_first;
    std::size_t m_count;
};

}  // namespace KvXmlLib16
