/// Writes objects of generated classes by their tables.
#pragma once

#include <cstdint>
#include <string_view>

#include "kvxml/objects/internal/table_records.h"
#include "kvxml/objects/table_class.h"
#include "kvxml/xml/internal/failed_path.h"

namespace KvXmlLib16 {

class CSerializationContext;
class CXmlWriter;

namespace internal {

class CTableWriter {
public:
    CTableWriter(CXmlWriter& writer, const CSerializationContext& context) noexcept
        : m_writer(writer), m_context(context) {}

    /// Writes an object that no member writes: a document, or what another class holds.
    void WriteRoot(const CTableClass& object, bool isRoot, const char* namespaceUri);
    void WriteAttributes(const CTableClass& object);

private:
    /// An object and what is made of its table.
    struct Owner {
        const CTableClass& object;
        const CTableRecords& records;
    };

    void WriteElement(const CTableClass& object, const CTableMember& member);
    void WriteInside(const Owner& owner, std::string_view schema);
    void WriteMixed(const Owner& owner);
    void WriteContent(const Owner& owner) {
        if (!owner.records.nodes.empty()) WriteNode(owner, 0);
    }
    void WriteNode(const Owner& owner, std::uint16_t index);
    void WriteChoice(const Owner& owner, std::uint16_t index);
    void WriteMember(const Owner& owner, const CTableNode& node);
    void WriteValue(const Owner& owner, const CTableMember& member, std::uint16_t index);
    void WriteRepeated(const Owner& owner, const CTableMember& member);
    void WriteUntyped(const CTableMember& member, const CXmlObjectBase& element);
    void WriteText(const Owner& owner);
    void WriteType(const CTableClass& object, const CTableMember& member, const CTableName& name);
    std::string_view TextOf(const Owner& owner, const CTableMember& member);

    bool HasAny(const Owner& owner, std::uint16_t index) const noexcept;
    void CheckCount(const CTableMember& member, std::int32_t count) const;
    void Missing(const CTableMember& member) const;

    /// Adds a step to the path of what failed, unless it has one already.
    void NoteMember(const char* name, const void* object, std::int64_t part);
    void NoteObject(const CTableClass& object, std::string_view name);
    static void VisitChildren(const CTableClass& object, CFailedPath::Place& place);

    CXmlWriter& m_writer;
    const CSerializationContext& m_context;
};

}  // namespace internal
}  // namespace KvXmlLib16
