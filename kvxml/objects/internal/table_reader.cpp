#include "kvxml/objects/internal/table_reader.h"

#include <string>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/attribute_col.h"
#include "kvxml/objects/element.h"
#include "kvxml/objects/internal/member_access.h"
#include "kvxml/objects/internal/simple_element.h"
#include "kvxml/objects/internal/table_access.h"
#include "kvxml/objects/internal/table_judgement.h"
#include "kvxml/objects/internal/table_objects.h"
#include "kvxml/objects/table_members.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/xml_name.h"
#include "kvxml/xml/xml_attribute.h"

namespace KvXmlLib16::internal {

CTableReader::CTableReader(CTableClass& object, const CTableRecords& records, CXmlElement& parent,
                           CXmlElement* cursor, const CSerializationContext& context,
                           const CTableReader* outer)
    : m_object(object),
      m_records(records),
      m_parent(parent),
      m_cursor(cursor),
      m_context(context),
      m_outer(outer),
      m_ignoreNamespaces(context.GetIgnoreNamespaces()),
      m_skipsUnknown(context.GetIgnoreUnknownElements()) {
    if (m_skipsUnknown) SkipUnknown();
}

CXmlElement* CTableReader::ReadRoot(CTableClass& object, CXmlElement& element, CXmlElement* cursor,
                                    const CSerializationContext& context) {
    const CClassTable& table = object.GetClassTable();
    const CTableRecords& records = CTableRecords::Of(table);
    if (records.isGroup) {
        if (!CTableAccess::BeginRead(object)) CTableAccess::Init(object);
        CTableReader reader(object, records, element, cursor, context, nullptr);
        if (!records.nodes.empty()) reader.ReadNode(0);
        return reader.m_cursor;
    }
    const CXmlName& name = *element.GetName();
    if (name.shared.IsEmpty()) name.shared = CSharedName(name.local);
    CTableAccess::SetName(object, name.shared);
    CTableJudgement::RequireType(table, element, context);
    ReadObject(object, element, context, (table.flags & CClassTable::kNillable) != 0);
    return nullptr;
}

void CTableReader::ReadObject(CTableClass& object, CXmlElement& element, const CSerializationContext& context,
                              bool isNillable) {
    if (!CTableAccess::BeginRead(object)) CTableAccess::Init(object);
    try {
        CTableReader(object, CTableRecords::Of(object.GetClassTable()), element, element.GetFirstElement(),
                     context, nullptr)
            .ReadElement(isNillable);
    } catch (const CKvException& e) {
        if (!e.GetPath().empty()) throw;  // the innermost path stays
        throw CKvValidationException("Failed to process the element.", element.GetXPath(), e);
    }
}

// --- the element itself ------------------------------------------------------------------------------------

void CTableReader::ReadElement(bool isNillable) {
    if (!m_records.attributes.empty() || !m_parent.GetAttributes().empty()) ReadAttributes(isNillable);
    if (isNillable && m_parent.IsNull()) m_object.SetNil(true);
    if (m_object.IsNil()) return RequireEmpty();
    if (!m_records.nodes.empty()) ReadNode(0);
    if (m_cursor != nullptr) Finish();
    ReadText();
}

void CTableReader::ReadAttributes(bool isNillable) {
    CSeenFlags seen(m_records.members.size());
    std::size_t count = 0;
    for (const CXmlAttribute* attribute : m_parent.GetAttributes()) {
        const int index = m_records.AttributeOf(*attribute, m_ignoreNamespaces);
        if (index < 0) {
            ReadOtherAttribute(*attribute, isNillable);
            continue;
        }
        ReadAttribute(m_records.members[static_cast<std::size_t>(index)], *attribute);
        seen.Set(static_cast<std::size_t>(index));
        ++count;
    }
    if (count >= m_records.attributes.size()) return;
    for (const std::uint16_t index : m_records.attributes) {
        const CMember& member = *m_records.members[index].member;
        if (!member.isRequired || seen.Test(index)) continue;
        throw CKvValidationException(FormatString("Failed to find the required Attribute [%s].", member.name),
                                     m_parent.GetXPath());
    }
}

void CTableReader::ReadAttribute(const CTableMember& member, const CXmlAttribute& attribute) {
    try {
        CTableJudgement::SetText(m_object, member, attribute.GetValueView());
    } catch (const CKvException& e) {
        ThrowSetFailed(member.member->name, attribute.GetXPath(), e);
    }
}

void CTableReader::ReadOtherAttribute(const CXmlAttribute& attribute, bool isNillable) {
    if (attribute.IsNamespaceAttribute()) return;
    if (attribute.IsNilAttribute()) {
        const std::optional<bool> isNil = ToNil(attribute.GetValueView());
        if (!isNil.has_value()) ThrowUnexpectedNil(attribute);
        if (*isNil && !isNillable) ThrowNilNotAllowed(m_parent);
        return m_object.SetNil(*isNil);
    }
    if (m_records.anyAttributes >= 0) {
        const CTableMember& any = m_records.members[static_cast<std::size_t>(m_records.anyAttributes)];
        if (any.namespaces.Accepts(attribute.GetNamespaceURI())) {
            CSmartPtr<CAttributeCol>& place = any.member->place.Attributes(m_object);
            if (place == nullptr) place = new CAttributeCol();
            return place->AddFrom(attribute);
        }
    }
    if (!m_context.GetIgnoreUnknownAttributes())
        throw CKvValidationException("Unexpected Attribute found.", attribute.GetXPath());
}

void CTableReader::RequireEmpty() const {
    if (m_parent.GetFirstElement() == nullptr && m_parent.GetTextView().empty()) return;
    throw CKvValidationException(
        FormatString("The element [%s] is nil and must be empty.", m_parent.GetLocalName().c_str()),
        m_parent.GetXPath());
}

void CTableReader::ReadText() {
    if (m_records.text < 0) {
        if (m_records.isMixed || m_parent.IsTextBlank()) return;
        throw CKvValidationException(
            FormatString("The element [%s] may not contain text.", m_parent.GetLocalName().c_str()),
            m_parent.GetXPath());
    }
    const CTableMember& member = m_records.members[static_cast<std::size_t>(m_records.text)];
    // Blanks between the elements of mixed content are formatting.
    if (m_records.isMixed &&
        (m_parent.GetFirstElement() == nullptr ? m_parent.GetTextView().empty() : m_parent.IsTextBlank()))
        return;
    std::string_view text = m_parent.GetTextView();
    if (text.empty() && member.member->defaultText != nullptr) text = member.member->defaultText;
    try {
        CTableJudgement::SetText(m_object, member, text);
    } catch (const CKvException& e) {
        ThrowSetFailed(m_parent.GetLocalName(), m_parent.GetXPath(), e);
    }
}

/// Nulls of JSON mean that a member is not there; any other element is one too many.
void CTableReader::Finish() {
    while (m_cursor != nullptr) {
        bool isPassed = m_skipsUnknown;
        for (const CTableNode& node : m_records.nodes) {
            if (isPassed) break;
            if (node.kind != CContentNode::Kind::Member) continue;
            const CTableMember& member = m_records.members[node.member];
            isPassed = m_cursor->IsNullMember() && Takes(member, *m_cursor) && member.IsOptional() &&
                       !member.member->isNillable;
        }
        if (!isPassed) CTableJudgement::ThrowRemains(m_parent, *m_cursor);
        Advance();
    }
}

// --- content -----------------------------------------------------------------------------------------------

void CTableReader::ReadNode(std::uint16_t index) {
    const CTableNode& node = m_records.nodes[index];
    if (m_skipsUnknown && !m_isInAll) {
        m_position = index;
        SkipUnknown();
    }
    if (node.kind == CContentNode::Kind::Member) return ReadMember(node);
    if (node.isOptional && !IsAtFirst(node)) return;
    if (node.kind == CContentNode::Kind::Choice) return ReadChoice(node, index);
    if (node.kind == CContentNode::Kind::All) return ReadAll(node, index);
    for (auto i = static_cast<std::uint16_t>(index + 1); i < node.end; i = m_records.nodes[i].end)
        ReadNode(i);
}

void CTableReader::ReadChoice(const CTableNode& node, std::uint16_t index) {
    for (;;) {
        const CXmlElement* const before = m_cursor;
        std::uint16_t chosen = 0;
        for (auto i = static_cast<std::uint16_t>(index + 1); i < node.end && m_cursor != nullptr;
             i = m_records.nodes[i].end) {
            const CTableNode& branch = m_records.nodes[i];
            if (!IsAtFirst(branch)) continue;
            chosen = i;
            // A name goes before a wildcard.
            if (branch.HasName(m_records.NameOf(*m_cursor, m_ignoreNamespaces))) break;
        }
        if (chosen != 0) {
            const CTableNode& branch = m_records.nodes[chosen];
            const bool isNull =
                branch.kind == CContentNode::Kind::Member && PassNull(m_records.members[branch.member]);
            if (isNull && m_cursor != before) continue;  // a null that is dropped is no choice
            return ReadNode(chosen);
        }
        if (node.isNullable || m_context.GetIgnoreMissingChoice()) return;
        ThrowNoChoice(node);
    }
}

void CTableReader::ReadAll(const CTableNode& node, std::uint16_t index) {
    std::vector<bool> seen(node.end - index);
    m_isInAll = true;
    for (bool isAny = true; isAny && m_cursor != nullptr;) {
        isAny = false;
        for (auto i = static_cast<std::uint16_t>(index + 1); i < node.end && m_cursor != nullptr;
             i = m_records.nodes[i].end) {
            if (seen[i - index] || !IsAtFirst(m_records.nodes[i])) continue;
            seen[i - index] = true;
            ReadNode(i);
            isAny = true;
        }
    }
    m_isInAll = false;
    if (m_context.GetIgnoreMissingMandatoryElements()) return;
    for (auto i = static_cast<std::uint16_t>(index + 1); i < node.end; i = m_records.nodes[i].end) {
        const CTableNode& child = m_records.nodes[i];
        if (seen[i - index] || child.isNullable || child.kind != CContentNode::Kind::Member) continue;
        throw CKvValidationException(FormatString("Failed to find the mandatory element [%s].",
                                                  m_records.members[child.member].Label()),
                                     m_parent.GetXPath());
    }
}

void CTableReader::ReadMember(const CTableNode& node) {
    const CTableMember& member = m_records.members[node.member];
    if (member.isPlainValue && m_cursor != nullptr && !m_cursor->IsNullMember() &&
        m_records.NameOf(*m_cursor, m_ignoreNamespaces) == member.nameId) {
        ReadValue(member);
        return Advance();
    }
    if (member.member->kind == CMember::Kind::Groups) return ReadGroups(member);
    const bool isThere = m_cursor != nullptr && Takes(member, *m_cursor);
    if (!isThere && (node.isNullable || !FindLater(member))) {
        if (!node.isNullable) Missing(member);
        return;
    }
    if (m_cursor->IsNullMember() && PassNull(member)) return;
    if (member.IsRepeated()) {
        ReadRun(member);
    } else {
        ReadOne(member);
        Advance();
    }
}

/// Where unknown elements are ignored, those before a mandatory one are, too.
bool CTableReader::FindLater(const CTableMember& member) {
    if (!m_skipsUnknown) return false;
    for (CXmlElement* at = m_cursor; at != nullptr; at = at->GetNextSiblingElement()) {
        if (!Takes(member, *at)) continue;
        m_cursor = at;
        return true;
    }
    return false;
}

/// Moves past a null of JSON that means that the member is not there.
bool CTableReader::PassNull(const CTableMember& member) {
    if (!m_cursor->IsNullMember() || !member.IsOptional() || member.member->isNillable || member.IsWildcard())
        return false;
    Advance();
    return true;
}

void CTableReader::ReadRun(const CTableMember& record) {
    const CMember& member = *record.member;
    CSmartPtr<CXmlCollectionBase>& place = member.place.Collection(m_object);
    if (place == nullptr) place = CTableObjectRules::NewList(m_object, record);
    const CSmartPtr<CXmlCollectionBase> keep(place);  // a listener may make the owner give it up
    CXmlCollectionBase& list = *keep;
    const std::uint32_t most =
        m_context.GetIgnoreInvalidCollectionCounts() ? CMember::kUnbounded : member.maxOccurs;
    std::uint32_t count = 0;
    const CXmlName* matched = nullptr;
    while (m_cursor != nullptr) {
        if (m_cursor->GetName() != matched) {
            if (!Takes(record, *m_cursor)) break;
            if (record.IsPlain()) matched = m_cursor->GetName();
        }
        if (count == most) {
            CheckCount(record, count + 1);
            break;
        }
        if (member.kind == CMember::Kind::Values) {
            CXmlElement& element = *m_cursor;
            CTableJudgement::JudgeValue(m_context, element, false);
            try {
                AppendText(list, record.value->Item(), record.own.name.localName, element.GetTextView());
            } catch (const CKvException& e) {
                ThrowSetFailed(member.name, element.GetXPath(), e);
            }
        } else {
            CTableAccess::Append(static_cast<CXmlCollection&>(list),
                                 member.kind == CMember::Kind::Objects ? ReadChild(record) : ReadUntyped());
        }
        ++count;
        Advance();
    }
    CheckCount(record, count);
}

void CTableReader::ReadGroups(const CTableMember& record) {
    const CMember& member = *record.member;
    const CTableRecords& items = CTableRecords::Of(*member.classTable);
    if (items.nodes.empty()) return;
    const bool ignoresCounts = m_context.GetIgnoreInvalidCollectionCounts();
    const std::uint32_t most = ignoresCounts ? CMember::kUnbounded : member.maxOccurs;
    const std::uint32_t least = ignoresCounts || items.nodes[0].isNullable ? 0 : member.minOccurs;
    CSmartPtr<CXmlCollectionBase>& place = member.place.Collection(m_object);
    for (std::uint32_t count = 0; count < most; ++count) {
        const bool isThere =
            m_cursor != nullptr && items.MayBeginWith(items.nodes[0], *m_cursor, m_ignoreNamespaces);
        // One that must be there tells by itself what is missing.
        if (!isThere && count >= least) break;
        const CXmlElement* const before = m_cursor;
        auto item = CSmartPtr<CXmlObjectBase>::Adopt(CTableAccess::PrepareNew(member.classTable->create()));
        auto& object = static_cast<CTableClass&>(*item);
        CTableReader reader(object, items, m_parent, m_cursor, m_context, this);
        reader.ReadNode(0);
        m_cursor = reader.m_cursor;
        if (m_cursor == before) break;
        if (place == nullptr) place = CTableObjectRules::NewList(m_object, record);
        CTableAccess::BeginRead(object);
        CTableAccess::Append(static_cast<CXmlCollection&>(*place), std::move(item));
    }
}

void CTableReader::ReadOne(const CTableMember& record) {
    const CMember& member = *record.member;
    switch (member.kind) {
        case CMember::Kind::Value:
            return ReadValue(record);
        case CMember::Kind::Object:
            member.place.Object(m_object) = ReadChild(record);
            return;
        default:
            member.place.Untyped(m_object) = static_cast<CElement*>(ReadUntyped().Get());
            return;
    }
}

void CTableReader::ReadValue(const CTableMember& record) {
    const CMember& member = *record.member;
    CXmlElement& element = *m_cursor;
    const bool hasTextOnly = element.GetFirstElement() == nullptr && element.GetAttributes().empty();
    bool isNil = !hasTextOnly && CTableJudgement::JudgeValue(m_context, element, member.isNillable);
    std::string_view text = element.GetTextView();
    if (text.empty()) {
        isNil = isNil || (member.isNillable && element.IsNull());
        if (!isNil && member.defaultText != nullptr) text = member.defaultText;
    }
    if (!record.isPlainValue) NameOf(record);  // refuses an abstract head
    if (isNil) {
        if (member.nilBit != CMember::kNoBit) CTableAccess::Mark(m_object, member.nilBit, true);
        if (member.bit != CMember::kNoBit) CTableAccess::Mark(m_object, member.bit, true);
        return;
    }
    try {
        CTableJudgement::SetText(m_object, record, text);
    } catch (const CKvException& e) {
        ThrowSetFailed(member.name, element.GetXPath(), e);
    }
}

CSmartPtr<CXmlObjectBase> CTableReader::ReadUntyped() {
    CSmartPtr<CXmlObjectBase> object(new CElement());
    CTableAccess::Read(*object, *m_cursor, m_cursor->GetFirstElement(), m_context);
    return object;
}

CSmartPtr<CXmlObjectBase> CTableReader::ReadChild(const CTableMember& member) {
    const CTableName& name =
        member.substituteOf.empty() && !member.member->isAbstract ? member.own : NameOf(member);
    const CClassTable& table =
        m_cursor->GetAttributes().empty() && name.classTable != nullptr && name.classTable->create != nullptr
            ? *name.classTable
            : ClassOf(member, name);
    auto object = CSmartPtr<CXmlObjectBase>::Adopt(CTableAccess::PrepareNew(table.create()));
    CTableAccess::SetName(*object, name.shared);
    ReadObject(static_cast<CTableClass&>(*object), *m_cursor, m_context, member.member->isNillable);
    return object;
}

/// Under which of the member's names the element at the cursor stands.
const CTableName& CTableReader::NameOf(const CTableMember& member) const {
    const std::uint32_t id = m_records.NameOf(*m_cursor, m_ignoreNamespaces);
    if (id == member.nameId) {
        if (!member.member->isAbstract) return member.own;
        throw CKvValidationException(FormatString("The element [%s] is abstract: another one of its "
                                                  "substitution group must stand in its place.",
                                                  member.member->name),
                                     m_cursor->GetXPath());
    }
    return member.substitutes[member.substituteOf.at(id)];
}

/// The class for the element at the cursor, by its name and its xsi:type.
const CClassTable& CTableReader::ClassOf(const CTableMember& member, const CTableName& name) const {
    const CClassTable* declared = name.classTable;
    if (declared == nullptr) {
        throw CKvValidationException(FormatString("The element [%s] has no content that [%s] can hold.",
                                                  m_cursor->GetLocalName().c_str(), member.Label()),
                                     m_cursor->GetXPath());
    }
    return CTableJudgement::ClassByType(*declared, *m_cursor, m_context);
}

// --- what stands where -------------------------------------------------------------------------------------

bool CTableReader::Takes(const CTableMember& member, const CXmlElement& element) const {
    if (member.IsWildcard()) return m_records.DoesWildcardTake(member, element, m_ignoreNamespaces);
    if (member.member->kind == CMember::Kind::Groups) return false;
    const std::uint32_t id = m_records.NameOf(element, m_ignoreNamespaces);
    return id != CTableMember::kNoName &&
           (id == member.nameId || (!member.substituteOf.empty() && member.substituteOf.count(id) != 0));
}

bool CTableReader::HasPlaceFor(const CXmlElement& element) const {
    return m_records.HasPlaceFor(element, m_position, m_ignoreNamespaces) ||
           (m_outer != nullptr && m_outer->HasPlaceFor(element));
}

void CTableReader::SkipUnknown() {
    while (m_cursor != nullptr && !HasPlaceFor(*m_cursor))
        m_cursor = m_cursor->GetNextSiblingElement();
}

// --- errors ------------------------------------------------------------------------------------------------

void CTableReader::Missing(const CTableMember& member) const {
    if (member.IsRepeated()) return CheckCount(member, 0);
    if (m_context.GetIgnoreMissingMandatoryElements()) return;
    if (member.IsWildcard()) {
        throw CKvValidationException(
            FormatString("Failed to find the required element from namespace [%s].", member.Label()),
            m_parent.GetXPath());
    }
    throw CKvValidationException(
        FormatString("Failed to find the required child element [%s].", member.Label()), m_parent.GetXPath());
}

void CTableReader::CheckCount(const CTableMember& record, std::uint32_t count) const {
    const CMember& member = *record.member;
    if (m_context.GetIgnoreInvalidCollectionCounts()) return;
    if (count > member.maxOccurs) {
        // A later member may have the name, or the next occurrence of a group.
        const std::uint32_t id = m_records.NameOf(*m_cursor, m_ignoreNamespaces);
        if (m_records.isGroup || (id != CTableMember::kNoName && m_records.lastNodes[id] > record.node))
            return;
        throw CKvValidationException(
            FormatString("The Maximum number of [%s] elements allowed in this collection is %u",
                         record.Label(), member.maxOccurs),
            m_parent.GetXPath());
    }
    if (count >= member.minOccurs) return;
    throw CKvValidationException(
        FormatString("The Minimum number of [%s] elements allowed in this collection is %u", record.Label(),
                     member.minOccurs),
        m_parent.GetXPath());
}

void CTableReader::ThrowNoChoice(const CTableNode& node) const {
    if (m_cursor == nullptr) {
        throw CKvValidationException(
            FormatString("No child elements within the element [%s] were populated. The element represents a "
                         "choice, so one and only one element should be populated. The element contained no "
                         "sutable child elements",
                         m_parent.GetLocalName().c_str()),
            m_parent.GetXPath());
    }
    throw CKvValidationException(
        FormatString("Expected one of [%s] in place of [%s].",
                     CTableJudgement::NamesOf(m_records, node).c_str(), m_cursor->GetLocalName().c_str()),
        m_cursor->GetXPath());
}

}  // namespace KvXmlLib16::internal
