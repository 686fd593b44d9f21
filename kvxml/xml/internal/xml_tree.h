/// What a document owns: nodes, names, prefixes and the strings made for its users.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/xml/internal/arena.h"
#include "kvxml/xml/internal/xml_name_table.h"
#include "kvxml/xml/internal/xml_text_run.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16::internal {

/// A prefix that an element declares. An element that declares any has them in front of it in memory, and
/// their number between them and itself.
struct CXmlBinding {
    const std::string* prefix;  ///< as the tree keeps it
    const CXmlNamespace* space;
};

/// A text or value as a string, once someone asked for it as such.
struct CXmlTextBox {
    std::string text;
    const CXmlElement* element;  ///< whose text or attribute's value it is
};

/// Owner of everything in a document. Destroying it takes time with the number of chunks, names and boxes,
/// not of nodes.
class CXmlTree {
public:
    using PrefixTable = std::map<std::string, std::string, std::less<>>;

    CXmlTree(const CXmlDocument* document, bool convert) : m_document(document), m_names(this, convert) {}
    CXmlTree(const CXmlTree&) = delete;
    CXmlTree& operator=(const CXmlTree&) = delete;

    const CXmlDocument* GetDocument() const noexcept { return m_document; }
    void SetDocument(const CXmlDocument* document) noexcept { m_document = document; }
    CXmlElement* GetRoot() const noexcept { return m_root; }
    /// Where the document element is linked in.
    CXmlElement** RootPlace() noexcept { return &m_root; }

    const PrefixTable& Prefixes() const noexcept { return m_prefixes; }
    /// Enters a prefix, or gives it another namespace. The prefix as the table keeps it.
    const std::string& SetPrefix(std::string_view prefix, std::string_view uri);
    /// From now on what the table says need not be what holds at some element.
    void SetHasInnerDeclarations() noexcept { m_hasInnerDeclarations = true; }
    /// The namespace that the prefix, or with an empty one names without prefix, stand for at the element:
    /// empty for none, null where the prefix is not declared.
    const std::string* FindNamespace(const CXmlElement& element, std::string_view prefix) const;
    /// The first prefix of the namespace, or the empty string. Paths ask for those of many siblings, so the
    /// first call after a change orders the table by namespaces.
    const std::string& FindPrefix(std::string_view uri);

    CArena& Arena() noexcept { return m_arena; }
    /// Memory of characters that many nodes may share; the element filter does not give it back.
    CArena& SharedCharacters() noexcept { return m_sharedCharacters; }
    CXmlNameTable& Names() noexcept { return m_names; }
    CSharedTextRuns& SharedRuns() noexcept { return m_sharedRuns; }

    /// The element's text or the attribute's value as a string that stays with the node.
    const std::string& BoxText(const CXmlElement& element);
    const std::string& BoxValue(const CXmlAttribute& attribute);
    std::size_t GetBoxCount() const noexcept { return m_boxes.size(); }
    /// Drops the boxes from `first` on that belong to the element or to what is in it.
    void DropBoxes(std::size_t first, const CXmlElement& element) noexcept;

private:
    CXmlTextBox* NewBox(const CXmlElement& element);

    const CXmlDocument* m_document;
    CXmlElement* m_root = nullptr;
    CArena m_arena;
    CArena m_sharedCharacters;
    CXmlNameTable m_names;
    CSharedTextRuns m_sharedRuns;
    PrefixTable m_prefixes;
    bool m_hasInnerDeclarations = false;  // elements inside the document element declare prefixes
    std::map<std::string_view, const std::string*> m_prefixOf;  // by namespace; empty until asked for
    std::vector<std::unique_ptr<CXmlTextBox>> m_boxes;
};

}  // namespace KvXmlLib16::internal
