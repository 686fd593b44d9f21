#include "kvxml/objects/internal/table_writer.h"

#include <string>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/attribute_col.h"
#include "kvxml/objects/element.h"
#include "kvxml/objects/internal/member_access.h"
#include "kvxml/objects/internal/table_access.h"
#include "kvxml/objects/internal/table_judgement.h"
#include "kvxml/objects/internal/table_objects.h"
#include "kvxml/settings/namespace_alias_map.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/tree_limits.h"
#include "kvxml/xml/internal/tree_output.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16::internal {

namespace {

[[noreturn]] void ThrowNamespace(std::string_view ns) {
    throw CKvInvalidNamespaceException(FormatString("Invalid Namespace [%s].", std::string(ns).c_str()),
                                       std::string());
}

/// A root that the context gives no prefix makes its namespace the default one, unless elements of its class
/// are in none, which would have to take that back.
bool MakesDefaultNamespace(const CTableRecords& records, const char* ns,
                           const CSerializationContext& context) {
    if (ns == nullptr || *ns == '\0' || !context.GetDefaultNamespaceURIRef().empty() ||
        context.GetNamespaceAliases().DoesNamespaceExist(ns))
        return false;
    for (const CTableMember& record : records.members) {
        const CMember& member = *record.member;
        if (record.node != CTableMember::kNoNode && *member.name != '\0' && *member.namespaceUri == '\0')
            return false;
    }
    return true;
}

}  // namespace

// --- elements ----------------------------------------------------------------------------------------------

void CTableWriter::WriteRoot(const CTableClass& object, bool isRoot, const char* namespaceUri) {
    const Owner owner{object, CTableRecords::Of(object.GetClassTable())};
    try {
        if (owner.records.isGroup) return WriteContent(owner);
        if (isRoot && object.IsNil() && (owner.records.table.flags & CClassTable::kNillable) == 0) {
            throw CKvInvalidStateException(FormatString(
                "The element [%s] can not be nil.", std::string(CTableAccess::NameToWrite(object)).c_str()));
        }
        if (isRoot && MakesDefaultNamespace(owner.records, namespaceUri, m_context))
            m_writer.SetDefaultNamespace(namespaceUri);
        CTableAccess::WriteStart(object, m_writer, isRoot, CTableAccess::NameToWrite(object), namespaceUri,
                                 m_context);
        WriteAttributes(object);
        WriteInside(owner,
                    isRoot ? CTableAccess::WriteInLineSchema(m_writer, m_context) : std::string_view());
    } catch (const CKvException& e) {
        const std::string_view name = CTableAccess::NameToWrite(object);
        NoteObject(object, name);
        throw CKvValidationException(
            FormatString("Failed to convert the element [%s] to XML", std::string(name).c_str()),
            isRoot ? m_writer.FailedPath().Take() : std::string(), e);
    }
}

/// What follows the attributes, up to the end tag.
void CTableWriter::WriteInside(const Owner& owner, std::string_view schema) {
    if (owner.object.IsNil()) {
        m_writer.WriteNilAttribute();
        return m_writer.WriteEndElement();
    }
    const bool hasText = owner.records.text >= 0;
    if (!schema.empty()) m_writer.WriteRawContent(schema, !hasText);
    if (hasText && owner.records.isMixed) return WriteMixed(owner);
    WriteContent(owner);
    if (hasText) WriteText(owner);
    m_writer.WriteEndElement();
}

void CTableWriter::WriteElement(const CTableClass& object, const CTableMember& member) {
    const CTableName* const name = CTableObjectRules::NameFor(member, object);
    try {
        if (name == nullptr) {
            throw CKvInvalidStateException(FormatString(
                "The element [%s] is abstract: the object has the name of none that may stand in "
                "its place.",
                member.Label()));
        }
        if (m_writer.GetDepth() >= static_cast<std::int64_t>(OrUnlimited(m_context.GetMaxElementDepth()))) {
            throw CKvException(FormatString("The elements are nested deeper than the limit of %u.",
                                            m_context.GetMaxElementDepth()));
        }
        if (object.IsNil() && !member.member->isNillable) {
            throw CKvInvalidStateException(FormatString("The element [%s] can not be nil.", member.Label()));
        }
        m_writer.WriteStartElement(name->name.localName, name->name.namespaceUri);
        WriteType(object, member, *name);
        WriteAttributes(object);
        WriteInside({object, CTableRecords::Of(object.GetClassTable())}, {});
    } catch (const CKvException&) {
        NoteObject(object, name == nullptr ? member.own.name.localName : name->name.localName);
        throw;
    }
}

void CTableWriter::WriteType(const CTableClass& object, const CTableMember& member, const CTableName& name) {
    const CClassTable& type = CTableRecords::TypeOf(object.GetClassTable());
    const CClassTable* const declared = name.classTable;
    if (declared == nullptr || &type == &CTableRecords::TypeOf(*declared)) return;
    if (!CTableRecords::IsDerived(type, CTableRecords::TypeOf(*declared))) {
        throw CKvInvalidStateException(
            FormatString("The class [%s] is none that the member [%s] may hold.", type.name, member.Label()));
    }
    if (!m_context.GetWriteTypeAttribute()) return;
    if ((type.flags & CClassTable::kAnonymous) != 0) {
        throw CKvInvalidStateException(FormatString(
            "The type of the class [%s] has no name, so [%s] can not hold it.", type.name, member.Label()));
    }
    m_writer.WriteTypeAttribute(type.namespaceUri, type.name, ItemType_string);
}

// --- attributes and text -----------------------------------------------------------------------------------

void CTableWriter::WriteAttributes(const CTableClass& object) {
    const CTableRecords& records = CTableRecords::Of(object.GetClassTable());
    const Owner owner{object, records};
    for (const std::uint16_t index : records.attributes) {
        const CTableMember& record = records.members[index];
        const CMember& member = *record.member;
        try {
            if (!IsMemberUsed(object, record)) {
                if (member.isRequired) ThrowMandatoryIsNull(member.name);
                continue;
            }
            const std::string_view text = TextOf(owner, record);
            if (!member.isRequired && member.defaultText != nullptr &&
                m_context.GetNoOptionalAttributeDefaultOutput() && text == member.defaultText)
                continue;
            m_writer.WriteSimpleAttribute(record.own.name, text, !record.IsList());
        } catch (const CKvException&) {
            if (IsMemberUsed(object, record))
                NoteMember((std::string("@") + member.name).c_str(), &object, index);
            throw;
        }
    }
    if (records.anyAttributes < 0) return;
    const CTableMember& any = records.members[static_cast<std::size_t>(records.anyAttributes)];
    const CAttributeCol* const attributes = any.member->place.Attributes(object).Get();
    if (attributes == nullptr || attributes->empty()) return;
    for (const CAttribute* attribute : *attributes) {
        const std::string_view ns = attribute->GetNamespaceView();
        if (!any.namespaces.Accepts(ns)) ThrowNamespace(ns);
    }
    CTableAccess::Write(*attributes, m_writer, "", m_context);
}

/// The text of a simple value, checked.
std::string_view CTableWriter::TextOf(const Owner& owner, const CTableMember& record) {
    const CMember& member = *record.member;
    std::string& scratch = m_writer.ScratchText();
    std::string_view text;
    if (record.IsList()) {
        text = record.value->FormatList(record.own.name.localName, *member.place.Collection(owner.object),
                                        scratch);
    } else {
        VisitHeldType(record.value->Item(), [&](auto* tag) {
            using T = std::remove_pointer_t<decltype(tag)>;
            text = record.value->Format<T>(record.own.name.localName, PlaceIn<T>(member.place, owner.object),
                                           scratch);
        });
    }
    if (member.isFixed) CTableJudgement::CheckFixed(owner.object, record, text);
    return text;
}

void CTableWriter::WriteText(const Owner& owner) {
    const CTableMember& record = owner.records.members[static_cast<std::size_t>(owner.records.text)];
    if (!IsMemberUsed(owner.object, record)) {
        if (record.member->isRequired) ThrowMandatoryIsNull(owner.records.table.name);
        return;
    }
    const std::string_view text = TextOf(owner, record);
    const bool isDefault = record.member->defaultText != nullptr && text == record.member->defaultText;
    m_writer.WriteText(text, record.own.name.type, isDefault);
}

/// Text first; its children are not set on lines of their own then, for these would become part of it.
void CTableWriter::WriteMixed(const Owner& owner) {
    const CTableMember& record = owner.records.members[static_cast<std::size_t>(owner.records.text)];
    if (!IsMemberUsed(owner.object, record)) {
        WriteContent(owner);
        return m_writer.WriteEndElement();
    }
    CTreeOutput output(m_writer, m_context);
    const bool hasChildren = !owner.records.nodes.empty() && HasAny(owner, 0);
    output.Text(TextOf(owner, record), hasChildren, false);
    WriteContent(owner);
    output.EndElement();
}

// --- content -----------------------------------------------------------------------------------------------

bool CTableWriter::HasAny(const Owner& owner, std::uint16_t index) const noexcept {
    for (std::uint16_t i = index; i < owner.records.nodes[index].end; ++i) {
        const CTableNode& node = owner.records.nodes[i];
        if (node.kind == CContentNode::Kind::Member &&
            IsMemberUsed(owner.object, owner.records.members[node.member]))
            return true;
    }
    return false;
}

void CTableWriter::WriteNode(const Owner& owner, std::uint16_t index) {
    const CTableNode& node = owner.records.nodes[index];
    if (node.kind == CContentNode::Kind::Member) return WriteMember(owner, node);
    if (node.isOptional && !HasAny(owner, index)) return;
    if (node.kind == CContentNode::Kind::Choice) return WriteChoice(owner, index);
    for (auto i = static_cast<std::uint16_t>(index + 1); i < node.end; i = owner.records.nodes[i].end)
        WriteNode(owner, i);
}

void CTableWriter::WriteChoice(const Owner& owner, std::uint16_t index) {
    const CTableNode& node = owner.records.nodes[index];
    std::uint16_t chosen = 0;
    for (auto i = static_cast<std::uint16_t>(index + 1); i < node.end; i = owner.records.nodes[i].end) {
        if (!HasAny(owner, i)) continue;
        if (chosen != 0) {
            throw CKvInvalidStateException(
                FormatString("Only one member of a choice may be set, but [%s] and [%s] are.",
                             CTableJudgement::NamesOf(owner.records, owner.records.nodes[chosen]).c_str(),
                             CTableJudgement::NamesOf(owner.records, owner.records.nodes[i]).c_str()));
        }
        chosen = i;
    }
    if (chosen != 0) return WriteNode(owner, chosen);
    if (node.isNullable || m_context.GetIgnoreMissingChoice()) return;
    throw CKvValidationException(
        "This element is a choice, and as such must have at one (and only one) valid item, currently there "
        "are none set",
        std::string());
}

void CTableWriter::WriteMember(const Owner& owner, const CTableNode& node) {
    const CTableMember& record = owner.records.members[node.member];
    const CMember& member = *record.member;
    if (!IsMemberUsed(owner.object, record)) {
        if (!node.isNullable) Missing(record);
        return;
    }
    switch (member.kind) {
        case CMember::Kind::Value:
            return WriteValue(owner, record, node.member);
        case CMember::Kind::Object:
            return WriteElement(static_cast<const CTableClass&>(*member.place.Object(owner.object)), record);
        case CMember::Kind::Any:
            return WriteUntyped(record, *member.place.Untyped(owner.object));
        default:
            return WriteRepeated(owner, record);
    }
}

void CTableWriter::WriteValue(const Owner& owner, const CTableMember& record, std::uint16_t index) {
    const CMember& member = *record.member;
    // The name of a substitute is not kept: any may stand for the abstract head.
    const CXmlWriter::SimpleName& name =
        member.isAbstract && !record.substitutes.empty() ? record.substitutes.front().name : record.own.name;
    try {
        if (member.nilBit != CMember::kNoBit && CTableAccess::IsSet(owner.object, member.nilBit)) {
            m_writer.WriteStartElement(name.localName, name.namespaceUri);
            m_writer.WriteNilAttribute();
            return m_writer.WriteEndElement();
        }
        const std::string_view text = TextOf(owner, record);
        const bool isDefault = member.defaultText != nullptr && text == member.defaultText;
        m_writer.WriteSimpleElement(name, text, isDefault, !record.IsList());
    } catch (const CKvException&) {
        NoteMember(member.name, &owner.object, index);
        throw;
    }
}

void CTableWriter::WriteRepeated(const Owner& owner, const CTableMember& record) {
    const CMember& member = *record.member;
    const CXmlCollectionBase& list = *member.place.Collection(owner.object);
    CheckCount(record, list.GetCount());
    const bool isArray = member.kind != CMember::Kind::Groups && *member.name != '\0';
    if (isArray) m_writer.BeginArray();
    if (member.kind == CMember::Kind::Values) {
        WriteValues(list, record.value->Item(), record.own.name, m_writer);
    } else {
        const auto& objects = static_cast<const CXmlCollection&>(list);
        for (const auto* node = CTableAccess::Head(objects); node != nullptr; node = node->next) {
            const CXmlObjectBase& item = *node->item;
            if (member.kind == CMember::Kind::Anys) {
                WriteUntyped(record, item);
                continue;
            }
            const auto& object = static_cast<const CTableClass&>(item);
            if (member.kind == CMember::Kind::Objects) {
                WriteElement(object, record);
            } else {
                WriteContent({object, CTableRecords::Of(object.GetClassTable())});
            }
        }
    }
    if (isArray) m_writer.EndArray();
}

void CTableWriter::WriteUntyped(const CTableMember& record, const CXmlObjectBase& item) {
    const auto& element = static_cast<const CElement&>(item);
    const char* const ns = record.IsWildcard() ? record.namespaces.Preferred() : record.member->namespaceUri;
    try {
        const std::string_view own = element.HasNamespace() ? element.GetNamespaceView() : ns;
        if (record.IsWildcard() ? !record.namespaces.Accepts(own)
                                : own != ns && !m_context.GetIgnoreNamespaces())
            ThrowNamespace(own);
        if (!record.IsWildcard() && element.GetNameView() != record.member->name) {
            throw CKvInvalidStateException(
                FormatString("This property requires an element with the name %s the element being set has "
                             "the element name %s",
                             record.member->name, element.GetName().c_str()));
        }
        CTableAccess::Write(element, m_writer, ns, m_context);
    } catch (const CKvException&) {
        NoteMember(element.GetName().c_str(), static_cast<const CXmlObjectBase*>(&element), -1);
        throw;
    }
}

// --- errors ------------------------------------------------------------------------------------------------

void CTableWriter::Missing(const CTableMember& record) const {
    if (record.IsRepeated()) return CheckCount(record, 0);
    ThrowMandatoryIsNull(record.Label());
}

void CTableWriter::CheckCount(const CTableMember& record, std::int32_t count) const {
    if (m_context.GetIgnoreInvalidCollectionCounts()) return;
    const CMember& member = *record.member;
    const auto size = static_cast<std::uint32_t>(count);
    if (size > member.maxOccurs) {
        throw CKvValidationException(
            FormatString("The Maximum number of [%s] elements allowed in this collection is %u",
                         record.Label(), member.maxOccurs),
            std::string());
    }
    if (size < member.minOccurs) {
        throw CKvValidationException(
            FormatString("The Minimum number of [%s] elements allowed in this collection is %u",
                         record.Label(), member.minOccurs),
            std::string());
    }
}

void CTableWriter::NoteMember(const char* name, const void* object, std::int64_t part) {
    CFailedPath& path = m_writer.FailedPath();
    if (path.steps.empty()) path.steps.push_back({name, {object, part}});
}

void CTableWriter::NoteObject(const CTableClass& object, std::string_view name) {
    auto& steps = m_writer.FailedPath().steps;
    if (!steps.empty()) {
        CFailedPath::Place place{steps.back()};
        VisitChildren(object, place);
        steps.back().position = place.Result();
    }
    steps.push_back({std::string(name), {static_cast<const CXmlObjectBase*>(&object)}});
}

void CTableWriter::VisitChildren(const CTableClass& object, CFailedPath::Place& place) {
    const CTableRecords& records = CTableRecords::Of(object.GetClassTable());
    for (const CTableNode& node : records.nodes) {
        if (node.kind != CContentNode::Kind::Member || !IsMemberUsed(object, records.members[node.member]))
            continue;
        const CTableMember& record = records.members[node.member];
        const CMember& member = *record.member;
        const auto visit = [&](const CXmlObjectBase& item) {
            if (member.kind == CMember::Kind::Groups)
                return VisitChildren(static_cast<const CTableClass&>(item), place);
            std::string_view name = CTableAccess::NameOf(item);
            if (member.classTable != nullptr) {
                const auto* own = CTableObjectRules::NameFor(record, static_cast<const CTableClass&>(item));
                name = own == nullptr ? record.own.name.localName : own->name.localName;
            }
            place.Visit(name, {&item});
        };
        if (member.kind == CMember::Kind::Value) {
            place.Visit(member.name, {&object, node.member});
        } else if (member.kind == CMember::Kind::Object) {
            visit(*member.place.Object(object));
        } else if (member.kind == CMember::Kind::Any) {
            visit(*member.place.Untyped(object));
        } else if (member.kind == CMember::Kind::Values) {
            const CXmlObjectBase* const list = member.place.Collection(object).Get();
            for (std::int32_t i = 0; i < member.place.Collection(object)->GetCount(); ++i)
                place.Visit(member.name, {list, i});
        } else {
            const auto& list = static_cast<const CXmlCollection&>(*member.place.Collection(object));
            for (const auto* at = CTableAccess::Head(list); at != nullptr; at = at->next)
                visit(*at->item);
        }
    }
}

}  // namespace KvXmlLib16::internal
