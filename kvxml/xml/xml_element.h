/// Element of a parsed document.
///
///     for (const CXmlElement* child = element->GetFirstElement(); child != nullptr;
///          child = child->GetNextSiblingElement())
///         std::cout << child->GetXPath() << ": " << child->GetTextView() << '\n';
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/xml/xml_attribute.h"

namespace KvXmlLib16 {

class CXmlDocument;

namespace internal {
struct CXmlTextRun;
}

/// Name, attributes, text and child elements. Made and owned by its document; it cannot be copied.
///
/// All character data directly inside the element, between its children too, is one text. There are no
/// comments and no processing instructions. Lifetime and thread rule as for `CXmlAttribute`.
class KVXML_EXPORT CXmlElement final {
public:
    CXmlElement(const CXmlElement&) = delete;
    CXmlElement& operator=(const CXmlElement&) = delete;

    const CXmlDocument* GetDocument() const noexcept;
    /// Null for the document element.
    const CXmlElement* GetParentElm() const noexcept { return m_parent; }
    /// The first child, or null.
    CXmlElement* GetFirstElement() noexcept { return m_firstChild; }
    const CXmlElement* GetFirstElement() const noexcept { return m_firstChild; }
    /// The next child of the same parent, or null.
    CXmlElement* GetNextSiblingElement() noexcept { return m_next; }
    const CXmlElement* GetNextSiblingElement() const noexcept { return m_next; }
    CXmlAttributeList GetAttributes() const noexcept {
        // Attributes lie directly after their element.
        auto* first = reinterpret_cast<CXmlAttribute*>(const_cast<CXmlElement*>(this) + 1);
        return CXmlAttributeList(first, m_attributeCount);
    }

    const std::string& GetLocalName() const noexcept;
    /// Empty for an element in no namespace.
    const std::string& GetNamespaceURI() const noexcept;
    /// The text, with line ends as "\n" and without carriage returns. In the element filter, the text so far
    /// of an ancestor; the reference then follows its growth.
    const std::string& GetText() const;
    /// The text without the string that `GetText` makes on its first call; for text with child elements in
    /// between the string is made nevertheless. For an ancestor in the element filter the view is good
    /// until the filter returns.
    std::string_view GetTextView() const {
        return m_textKind == TextKind_Characters ? std::string_view(m_text.characters, m_textLength)
                                                 : GetJoinedText();
    }
    /// Whether the text is empty or consists of blanks, tabs and line ends only, as between the children of
    /// formatted documents. Makes no string.
    bool IsTextBlank() const noexcept;
    /// Value of the first attribute with this name and namespace; empty when there is none.
    const std::string& GetAttribute(std::string_view localName, std::string_view namespaceUri) const;
    /// The namespace that the prefix, or with an empty one names without prefix, stand for at this element:
    /// empty for none, null where the prefix is not declared.
    const std::string* FindNamespace(std::string_view prefix) const;
    /// Path from the document element, with the position among siblings of the same name where there are
    /// several: "/a/x:b[2]". Names carry the prefixes that the document's table has at the time of the call.
    std::string GetXPath() const;

    /// Whether JSON input gave the element as null: as the value of a member, or as an item of an array. Such
    /// an element is empty. What null means depends on what reads it.
    bool IsNull() const noexcept { return m_textKind == TextKind_None && m_textLength != 0; }
    bool IsNullMember() const noexcept { return IsNull() && m_textLength == kNullMember; }

    /// For the library: the name as the document keeps it.
    const internal::CXmlName* GetName() const noexcept { return m_name; }

private:
    friend class internal::CXmlTree;
    friend class internal::CXmlTreeBuilder;

    CXmlElement() = default;

    std::string_view GetJoinedText() const;

    /// `m_textLength` of elements without text that JSON gave as null.
    static constexpr std::uint32_t kNullMember = 1;
    static constexpr std::uint32_t kNullItem = 2;

    /// What `m_text` holds.
    enum TextKind : std::uint32_t {
        TextKind_None = 0,        ///< nothing: the element has no text
        TextKind_Characters = 1,  ///< `m_textLength` characters
        TextKind_SharedRuns = 2,  ///< a chain of blank pieces that other elements may share
        TextKind_Runs = 3,        ///< a chain of pieces whose last one is the element's own
        TextKind_Box = 4,         ///< a string
    };
    union Text {
        const char* characters;
        const internal::CXmlTextRun* sharedRuns;
        internal::CXmlTextRun* runs;
        internal::CXmlTextBox* box;
    };

    CXmlElement* m_parent;
    CXmlElement* m_next;
    CXmlElement* m_firstChild;
    const internal::CXmlName* m_name;
    mutable Text m_text;
    std::uint32_t m_textLength;  // of characters; without text, whether the element is null
    std::uint32_t m_attributeCount : 28;
    std::uint32_t m_declares : 1;  // declarations of prefixes lie in front of the element
    mutable std::uint32_t m_textKind : 3;
};

}  // namespace KvXmlLib16
