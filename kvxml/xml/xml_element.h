/// Elements of the XML tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_name.h"

namespace KvXmlLib16 {

class CXmlDocument;

namespace internal {
class CXmlTree;
struct TextRun;
}  // namespace internal

/// One element: name, attributes, child elements, and all its character data as one text. Lives in its
/// document's memory: it dies with the document, or when the document's element filter discards it. All
/// strings are in the local code page and live as long as the element.
class KVXML_EXPORT CXmlElement final {
public:
    const CXmlDocument* GetDocument() const noexcept;
    /// Null for the document element.
    const CXmlElement* GetParentElm() const noexcept {
        return (m_owner & 1) != 0 ? nullptr : reinterpret_cast<const CXmlElement*>(m_owner);
    }
    /// First child element, or null.
    CXmlElement* GetFirstElement() const noexcept { return m_firstChild; }
    CXmlElement* GetNextSiblingElement() const noexcept { return m_next; }
    CXmlAttributes GetAttributes() const noexcept { return CXmlAttributes(m_attributes, m_attributeCount); }

    const std::string& GetLocalName() const noexcept { return m_name->local; }
    /// Empty for an element in no namespace.
    const std::string& GetNamespaceURI() const noexcept { return m_name->uri; }
    /// All character data of the element, without that of its children, carriage returns left out.
    const std::string& GetText() const;
    /// The same without making a string where the text is in one piece.
    std::string_view GetTextView() const {
        return m_textKind == kContiguous ? std::string_view(m_text, m_textLength) : std::string_view(GetText());
    }
    /// Value of the first attribute of that local name and namespace; a shared empty string when there is
    /// none.
    const std::string& GetAttribute(std::string_view localName, std::string_view namespaceUri) const;
    /// Path from the document element; siblings of the same name are told apart by their position, from 1.
    std::string GetXPath() const;

    const internal::CXmlName* GetName() const noexcept { return m_name; }

private:
    friend class internal::CXmlTree;

    enum TextKind : std::uint32_t { kContiguous = 0, kRuns = 1, kBox = 2 };

    CXmlElement() noexcept : m_text(""), m_attributeCount(0), m_textKind(kContiguous) {}

    internal::CXmlTree& Tree() const noexcept;

    std::uintptr_t m_owner = 0;  // the parent, or the tree with the lowest bit set
    CXmlElement* m_next = nullptr;
    CXmlElement* m_firstChild = nullptr;
    const internal::CXmlName* m_name = nullptr;
    CXmlAttribute* m_attributes = nullptr;
    union {
        const char* m_text;           // kContiguous
        internal::TextRun* m_runs;    // kRuns: the last of a ring
        const std::string* m_textBox;  // kBox
    };
    std::uint32_t m_textLength = 0;
    std::uint32_t m_attributeCount : 30;
    std::uint32_t m_textKind : 2;
};

}  // namespace KvXmlLib16
