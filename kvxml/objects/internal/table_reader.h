/// Reads objects of generated classes from elements, by their tables.
#pragma once

#include <cstdint>

#include "kvxml/objects/internal/table_records.h"
#include "kvxml/objects/table_class.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

class CSerializationContext;

namespace internal {

/// Reads the content of one object. One element of look-ahead is enough, for content models of schemas are
/// deterministic. What the walk costs in stack depends on the table and on the depth of the document only.
class CTableReader {
public:
    /// Reads an object that no member reads: a document, or what another class holds. Objects of groups read
    /// from the cursor on. Returns the first element that was not read.
    static CXmlElement* ReadRoot(CTableClass& object, CXmlElement& element, CXmlElement* cursor,
                                 const CSerializationContext& context);

private:
    CTableReader(CTableClass& object, const CTableRecords& records, CXmlElement& parent, CXmlElement* cursor,
                 const CSerializationContext& context, const CTableReader* outer);

    static void ReadObject(CTableClass& object, CXmlElement& element, const CSerializationContext& context,
                           bool isNillable);

    // --- the element itself
    void ReadElement(bool isNillable);
    void ReadAttributes(bool isNillable);
    void ReadAttribute(const CTableMember& member, const CXmlAttribute& attribute);
    void ReadOtherAttribute(const CXmlAttribute& attribute, bool isNillable);
    void ReadText();
    void RequireEmpty() const;
    void Finish();

    // --- content
    void ReadNode(std::uint16_t index);
    void ReadChoice(const CTableNode& node, std::uint16_t index);
    void ReadAll(const CTableNode& node, std::uint16_t index);
    void ReadMember(const CTableNode& node);
    void ReadRun(const CTableMember& member);
    void ReadGroups(const CTableMember& member);
    void ReadOne(const CTableMember& member);
    void ReadValue(const CTableMember& member);
    CSmartPtr<CXmlObjectBase> ReadChild(const CTableMember& member);
    CSmartPtr<CXmlObjectBase> ReadUntyped();
    const CClassTable& ClassOf(const CTableMember& member, const CTableName& name) const;
    const CTableName& NameOf(const CTableMember& member) const;
    bool FindLater(const CTableMember& member);
    bool PassNull(const CTableMember& member);

    bool Takes(const CTableMember& member, const CXmlElement& element) const;
    bool IsAtFirst(const CTableNode& node) const {
        return m_cursor != nullptr && m_records.MayBeginWith(node, *m_cursor, m_ignoreNamespaces);
    }
    bool HasPlaceFor(const CXmlElement& element) const;
    void Advance() {
        m_cursor = m_cursor->GetNextSiblingElement();
        if (m_skipsUnknown) SkipUnknown();
    }
    void SkipUnknown();

    // --- errors
    void Missing(const CTableMember& member) const;
    void CheckCount(const CTableMember& member, std::uint32_t count) const;
    [[noreturn]] void ThrowNoChoice(const CTableNode& node) const;

    CTableClass& m_object;
    const CTableRecords& m_records;
    CXmlElement& m_parent;
    CXmlElement* m_cursor;
    const CSerializationContext& m_context;
    const CTableReader* m_outer;  // of a group: the reader that found it
    bool m_ignoreNamespaces;
    bool m_skipsUnknown;
    bool m_isInAll = false;        // then any member may come
    std::uint16_t m_position = 0;  // of the node that is read; kept where unknown elements are ignored
};

}  // namespace internal
}  // namespace KvXmlLib16
