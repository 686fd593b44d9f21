#include "kvxml/objects/internal/table_records.h"

#include <algorithm>
#include <mutex>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/objects/element.h"
#include "kvxml/objects/internal/table_access.h"
#include "kvxml/objects/table_class.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/xml_attribute.h"

namespace KvXmlLib16::internal {

using KvXmlLib16Data::CAttributeInfo;
using KvXmlLib16Data::CElementInfo;
using KvXmlLib16Data::CParentElementInfo;

namespace {

[[noreturn]] void ThrowDriven() {
    throw CKvException("Not implemented, should never be called");
}

/// What copies, comparisons and paths of errors ask about an element member.
class CTableElementInfo final : public CElementInfo {
public:
    CTableElementInfo(const CMember& member, int index)
        : CElementInfo(member.name, member.namespaceUri, index) {}
    bool ElementToXml(const CSerializationContext&, const CXmlGeneratedClass*, CXmlWriter*) override {
        ThrowDriven();
    }
    bool ElementFromXml(const CSerializationContext&, CXmlGeneratedClass*, CXmlElement*, CXmlElement**,
                        const char*, KvXmlLib16Data::XmlElementType) override {
        ThrowDriven();
    }

protected:
    CSmartPtr<CXmlObjectBase> NewMemberLike(const CXmlObjectBase& object) const override {
        if (const auto* element = dynamic_cast<const CElement*>(&object)) {
            static_cast<void>(element);
            return CSmartPtr<CXmlObjectBase>(new CElement());
        }
        const auto* generated = dynamic_cast<const CTableClass*>(&object);
        if (generated == nullptr || generated->GetClassTable().create == nullptr) return nullptr;
        return CSmartPtr<CXmlObjectBase>(generated->GetClassTable().create());
    }
};

class CTableAttributeInfo final : public CAttributeInfo {
public:
    CTableAttributeInfo(const CMember& member, int index)
        : CAttributeInfo(member.name, member.namespaceUri, index, !member.isRequired, member.defaultText) {}
    void AttributeToXml(const CSerializationContext&, const CXmlGeneratedClass*, CXmlWriter*) override {
        ThrowDriven();
    }
    bool AttributeFromXml(const CSerializationContext&, CXmlGeneratedClass*, CXmlAttribute*) override {
        ThrowDriven();
    }
    void Validate(const CSerializationContext&, bool) override { ThrowDriven(); }
};

bool IsElement(const CMember& member) {
    return member.kind != CMember::Kind::Attribute && member.kind != CMember::Kind::AnyAttributes &&
           member.kind != CMember::Kind::Text;
}

CMemberPlace::Kind NeededPlace(const CMember& member, const CValueRecord* value) {
    switch (member.kind) {
        case CMember::Kind::AnyAttributes:
            return CMemberPlace::Kind::Attributes;
        case CMember::Kind::Object:
            return CMemberPlace::Kind::Object;
        case CMember::Kind::Any:
            return CMemberPlace::Kind::Untyped;
        case CMember::Kind::Attribute:
        case CMember::Kind::Text:
        case CMember::Kind::Value:
            if (!value->IsList()) {
                CMemberPlace::Kind kind = CMemberPlace::Kind::None;
                VisitHeldType(value->Item(),
                              [&](auto* tag) { kind = PlaceKindOf<std::remove_pointer_t<decltype(tag)>>(); });
                return kind;
            }
            [[fallthrough]];
        default:
            return CMemberPlace::Kind::Collection;
    }
}

}  // namespace

// --- wildcards ---------------------------------------------------------------------------------------------

CNamespaceList::CNamespaceList(const char* list, const char* targetNamespace)
    : m_target(targetNamespace == nullptr ? "" : targetNamespace) {
    const std::string_view tokens = list;
    for (std::size_t begin = tokens.find_first_not_of(" \t\n\r"); begin != std::string_view::npos;) {
        const std::size_t end = std::min(tokens.find_first_of(" \t\n\r", begin), tokens.size());
        const std::string_view token = tokens.substr(begin, end - begin);
        if (token == "##any") {
            m_isAny = true;
        } else if (token == "##other") {
            m_isOther = true;
        } else {
            m_uris.emplace_back(token == "##local"             ? std::string_view()
                                : token == "##targetNamespace" ? std::string_view(m_target)
                                                               : token);
        }
        begin = tokens.find_first_not_of(" \t\n\r", end);
    }
    if (m_isAny) {
        m_preferred = m_target;
    } else if (!m_uris.empty() && std::find(m_uris.begin(), m_uris.end(), "") == m_uris.end()) {
        m_preferred = m_uris.front();
    }
}

bool CNamespaceList::Accepts(std::string_view ns) const noexcept {
    return m_isAny || (m_isOther && !ns.empty() && ns != m_target) ||
           std::find(m_uris.begin(), m_uris.end(), ns) != m_uris.end();
}

// --- making ------------------------------------------------------------------------------------------------

const CTableRecords& CTableRecords::Make(const CClassTable& table) {
    static std::recursive_mutex* const mutex = new std::recursive_mutex();  // outlives all static objects
    const std::lock_guard<std::recursive_mutex> lock(*mutex);
    const CTableRecords* known = table.records.load(std::memory_order_relaxed);
    if (known == nullptr) {
        known = std::make_unique<CTableRecords>(table).release();  // kept as long as the table
        table.records.store(known, std::memory_order_release);
    }
    return *known;
}

CTableRecords::CTableRecords(const CClassTable& classTable)
    : table(classTable), isGroup((classTable.flags & CClassTable::kGroup) != 0) {
    AddMembers(table);
    for (const CClassTable* at = &table; at != nullptr;
         at = (at->flags & CClassTable::kRoot) != 0 ? at->base : nullptr)
        isMixed = isMixed || (at->flags & CClassTable::kMixed) != 0;
    for (CTableMember& member : members)
        FinishMember(member);
    std::uint16_t firstMember = 0;
    AddContent(table, firstMember);
    SetNames();
    if (!nodes.empty()) FinishNode(0);
    MakeInfo();
}

CTableRecords::~CTableRecords() {
    for (const CElementInfo* info : elementInfo)
        delete info;
    for (const CAttributeInfo* info : attributeInfo)
        delete info;
}

void CTableRecords::AddMembers(const CClassTable& from) {
    if (from.base != nullptr && (from.flags & CClassTable::kRestriction) == 0) AddMembers(*from.base);
    for (std::uint16_t i = 0; i < from.memberCount; ++i) {
        members.emplace_back();
        members.back().member = &from.members[i];
    }
}

const CValueRecord* CTableRecords::ValueRecord(const CValueType& type) {
    std::unique_ptr<CValueRecord>& record = m_values[&type];
    if (record == nullptr) record = std::make_unique<CValueRecord>(type);
    return record.get();
}

void CTableRecords::FinishMember(CTableMember& made) {
    const CMember& member = *made.member;
    const auto index = static_cast<std::uint16_t>(&made - members.data());
    if (member.valueType != nullptr) made.value = ValueRecord(*member.valueType);
    if (made.IsList() && made.IsRepeated()) {
        throw CKvInvalidStateException(FormatString(
            "The repeated member [%s] of the class [%s] has a list type.", member.name, table.name));
    }
    if (member.place.GetKind() != NeededPlace(member, made.value)) {
        throw CKvInvalidStateException(
            FormatString("The place of the member [%s] of the class [%s] is of "
                         "another type than its value.",
                         member.name, table.name));
    }
    const ItemType item = made.value == nullptr ? ItemType_string : made.value->WrittenAs();
    const auto named = [&](const char* name, const char* ns, const CClassTable* classTable) {
        return CTableName{CSharedName(name), {CXmlWriter::NewNameId(), item, name, ns}, classTable};
    };
    made.own = named(member.name, member.namespaceUri, member.classTable);
    for (std::uint16_t i = 0; i < member.substituteCount; ++i) {
        const CSubstitute& substitute = member.substitutes[i];
        made.substitutes.push_back(named(substitute.name, substitute.namespaceUri, substitute.classTable));
    }
    if (member.namespaces != nullptr)
        made.namespaces = CNamespaceList(member.namespaces, member.targetNamespace);
    if (member.kind == CMember::Kind::Attribute) attributes.push_back(index);
    if (member.kind == CMember::Kind::AnyAttributes) anyAttributes = index;
    if (member.kind == CMember::Kind::Text) text = index;
    if (member.defaultText == nullptr || made.value == nullptr || made.IsRepeated()) return;
    if (made.IsList()) {
        made.defaultList = made.value->ParseList(member.name, member.defaultText);
    } else {
        VisitHeldType(made.value->Item(), [&](auto* tag) {
            using T = std::remove_pointer_t<decltype(tag)>;
            CTableAccess::SetVariant(made.defaultValue, made.value->Item(),
                                     made.value->Parse<T>(member.name, member.defaultText));
        });
    }
}

void CTableRecords::AddContent(const CClassTable& from, std::uint16_t& firstMember) {
    const bool hasBase = from.base != nullptr && (from.flags & CClassTable::kRestriction) == 0;
    if (!hasBase) {
        AddOwnContent(from, firstMember);
        firstMember = static_cast<std::uint16_t>(firstMember + from.memberCount);
        return;
    }
    // A sequence of what the base has and of the class's own, without the sequence if one of them is empty.
    const std::size_t first = nodes.size();
    AddContent(*from.base, firstMember);
    const std::size_t middle = nodes.size();
    AddOwnContent(from, firstMember);
    firstMember = static_cast<std::uint16_t>(firstMember + from.memberCount);
    if (middle == first || nodes.size() == middle) return;
    for (std::size_t i = first; i < nodes.size(); ++i)
        ++nodes[i].end;
    for (CTableMember& member : members) {
        if (member.node != CTableMember::kNoNode && member.node >= first) ++member.node;
    }
    const auto end = static_cast<std::uint16_t>(nodes.size() + 1);
    nodes.insert(nodes.begin() + static_cast<std::ptrdiff_t>(first),
                 CTableNode{CContentNode::Kind::Sequence, false, false, end, 0, 0, {}, {}});
}

void CTableRecords::AddOwnContent(const CClassTable& from, std::uint16_t firstMember) {
    const auto add = [&](const CContentNode& node) {
        const std::size_t at = nodes.size();
        const auto member = static_cast<std::uint16_t>(firstMember + node.member);
        nodes.push_back({node.kind,
                         node.isOptional,
                         false,
                         static_cast<std::uint16_t>(at + node.size),
                         member,
                         0,
                         {},
                         {}});
        if (node.kind == CContentNode::Kind::Member) members[member].node = static_cast<std::uint16_t>(at);
    };
    if (from.content != nullptr) {
        for (std::uint16_t i = 0; i < from.contentCount; ++i)
            add(from.content[i]);
        return;
    }
    std::uint16_t count = 0;
    for (std::uint16_t i = 0; i < from.memberCount; ++i)
        count = static_cast<std::uint16_t>(count + (IsElement(from.members[i]) ? 1 : 0));
    if (count == 0) return;
    add(CContentNode::Sequence(static_cast<std::uint16_t>(count + 1)));
    for (std::uint16_t i = 0; i < from.memberCount; ++i) {
        if (IsElement(from.members[i])) add(CContentNode::Member(i));
    }
}

void CTableRecords::SetNames() {
    const auto isLess = [](const NameEntry& a, const NameEntry& b) {
        return a.local != b.local ? a.local < b.local : a.ns < b.ns;
    };
    for (const CTableMember& member : members) {
        if (member.node == CTableMember::kNoNode) continue;
        if (*member.member->name != '\0')
            m_elementNames.push_back({member.member->name, member.member->namespaceUri, 0});
        for (const CTableName& substitute : member.substitutes)
            m_elementNames.push_back({substitute.name.localName, substitute.name.namespaceUri, 0});
    }
    std::sort(m_elementNames.begin(), m_elementNames.end(), isLess);
    m_elementNames.erase(std::unique(m_elementNames.begin(), m_elementNames.end(),
                                     [](const NameEntry& a, const NameEntry& b) {
                                         return a.local == b.local && a.ns == b.ns;
                                     }),
                         m_elementNames.end());
    for (std::size_t i = 0; i < m_elementNames.size(); ++i)
        m_elementNames[i].number = static_cast<std::uint32_t>(i);
    lastNodes.assign(m_elementNames.size(), 0);
    for (CTableMember& member : members) {
        if (member.node == CTableMember::kNoNode) continue;
        const auto numberOf = [&](const CXmlWriter::SimpleName& name) {
            const std::uint32_t number = Find(m_elementNames, name.localName, name.namespaceUri, false);
            lastNodes[number] = std::max(lastNodes[number], member.node);
            return number;
        };
        if (*member.member->name != '\0') member.nameId = numberOf(member.own.name);
        member.isPlainValue = member.member->kind == CMember::Kind::Value && !member.member->isAbstract &&
                              member.substitutes.empty();
        for (std::size_t i = 0; i < member.substitutes.size(); ++i)
            member.substituteOf.emplace(numberOf(member.substitutes[i].name), static_cast<std::uint16_t>(i));
    }
    for (const std::uint16_t index : attributes)
        m_attributeNames.push_back({members[index].member->name, members[index].member->namespaceUri, index});
    std::sort(m_attributeNames.begin(), m_attributeNames.end(), isLess);
}

void CTableRecords::SetFirst(CTableNode& node, const CTableMember& leaf) {
    const CMember& member = *leaf.member;
    const auto set = [&](std::uint32_t id) {
        if (node.names.size() <= id / 64) node.names.resize(id / 64 + 1);
        node.names[id / 64] |= std::uint64_t{1} << id % 64;
    };
    if (leaf.nameId != CTableMember::kNoName) set(leaf.nameId);
    for (const auto& [id, index] : leaf.substituteOf)
        set(id);
    if (leaf.IsWildcard() || member.kind == CMember::Kind::Groups) node.others.push_back(node.member);
    node.isNullable = leaf.IsOptional();
    if (member.kind == CMember::Kind::Groups) {
        const CTableRecords& items = Of(*member.classTable);
        node.isNullable = node.isNullable || items.nodes.empty() || items.nodes[0].isNullable;
    }
}

void CTableRecords::FinishNode(std::uint16_t index) {
    CTableNode& node = nodes[index];
    if (node.kind == CContentNode::Kind::Member) return SetFirst(node, members[node.member]);
    const bool isChoice = node.kind == CContentNode::Kind::Choice;
    bool isNullable = !isChoice || node.end == index + 1;
    bool isReached = true;  // a later child may be the first that has content
    for (std::uint16_t i = static_cast<std::uint16_t>(index + 1); i < node.end; i = nodes[i].end) {
        FinishNode(i);
        const CTableNode& child = nodes[i];
        nodes[i].parent = index;
        isNullable = isChoice ? isNullable || child.isNullable : isNullable && child.isNullable;
        if (!isReached) continue;
        if (node.names.size() < child.names.size()) node.names.resize(child.names.size());
        for (std::size_t word = 0; word < child.names.size(); ++word)
            node.names[word] |= child.names[word];
        node.others.insert(node.others.end(), child.others.begin(), child.others.end());
        isReached = node.kind != CContentNode::Kind::Sequence || child.isNullable;
    }
    node.isNullable = isNullable || node.isOptional;
}

void CTableRecords::MakeInfo() {
    classInfo = std::make_unique<CParentElementInfo>(
        KvXmlLib16Data::XmlElementGroupType_Sequence,
        isGroup ? KvXmlLib16Data::XmlElementType_PseudoElement : KvXmlLib16Data::XmlElementType_Element,
        table.name, table.namespaceUri, true, table.base != nullptr, text, ItemType_Unknown, nullptr, false);
    classInfo->DeclareNewIsAsInit();
    elementKey = CTableAccess::IdOf(*classInfo) << 2;
    attributeKey = elementKey | 2;
    for (const CTableNode& node : nodes) {
        if (node.kind == CContentNode::Kind::Member)
            elementInfo.push_back(new CTableElementInfo(*members[node.member].member, node.member));
    }
    elementInfo.push_back(nullptr);
    for (std::size_t i = 0; i < members.size(); ++i) {
        const CMember& member = *members[i].member;
        if (member.kind == CMember::Kind::Attribute || member.kind == CMember::Kind::AnyAttributes)
            attributeInfo.push_back(new CTableAttributeInfo(member, static_cast<int>(i)));
    }
    attributeInfo.push_back(nullptr);
}

// --- looking up --------------------------------------------------------------------------------------------

std::uint32_t CTableRecords::Find(const std::vector<NameEntry>& names, std::string_view local,
                                  std::string_view ns, bool ignoreNamespaces) {
    auto at =
        std::lower_bound(names.begin(), names.end(), local,
                         [](const NameEntry& entry, std::string_view name) { return entry.local < name; });
    for (; at != names.end() && at->local == local; ++at) {
        if (ignoreNamespaces || at->ns == ns) return at->number;
    }
    return CTableMember::kNoName;
}

std::uint32_t CTableRecords::LookUp(const CXmlName& name, bool ignoreNamespaces) const {
    name.cacheValue = Find(m_elementNames, name.local, name.uri, ignoreNamespaces);
    name.cacheKey = elementKey | (ignoreNamespaces ? 1 : 0);
    return name.cacheValue;
}

int CTableRecords::AttributeOf(const CXmlAttribute& attribute, bool ignoreNamespaces) const {
    const CXmlName& name = *attribute.GetName();
    const std::uint64_t key = attributeKey | (ignoreNamespaces ? 1 : 0);
    if (name.cacheKey != key) {
        name.cacheValue = Find(m_attributeNames, name.local, name.uri, ignoreNamespaces);
        name.cacheKey = key;
    }
    return static_cast<int>(name.cacheValue);
}

bool CTableRecords::DoesWildcardTake(const CTableMember& member, const CXmlElement& element,
                                     bool ignoreNamespaces) const {
    if (!member.namespaces.Accepts(element.GetNamespaceURI())) return false;
    const std::uint32_t name = NameOf(element, ignoreNamespaces);
    return name == CTableMember::kNoName || lastNodes[name] <= member.node;
}

bool CTableRecords::MayBeginWith(const CTableNode& node, const CXmlElement& element,
                                 bool ignoreNamespaces) const {
    if (!node.names.empty() && node.HasName(NameOf(element, ignoreNamespaces))) return true;
    for (const std::uint16_t index : node.others) {
        const CTableMember& member = members[index];
        if (member.member->kind != CMember::Kind::Groups) {
            if (DoesWildcardTake(member, element, ignoreNamespaces)) return true;
            continue;
        }
        const CTableRecords& items = Of(*member.member->classTable);
        if (!items.nodes.empty() && items.MayBeginWith(items.nodes[0], element, ignoreNamespaces))
            return true;
    }
    return false;
}

bool CTableRecords::HasPlaceFor(const CXmlElement& element, std::uint16_t from, bool ignoreNamespaces) const {
    const std::uint32_t name = NameOf(element, ignoreNamespaces);
    if (name != CTableMember::kNoName && lastNodes[name] >= from) return true;
    for (const CTableMember& member : members) {
        if (member.node == CTableMember::kNoNode || member.node < from) continue;
        if (member.IsWildcard()) {
            if (member.namespaces.Accepts(element.GetNamespaceURI())) return true;
        } else if (member.member->kind == CMember::Kind::Groups) {
            if (Of(*member.member->classTable).HasPlaceFor(element, 0, ignoreNamespaces)) return true;
        }
    }
    return false;
}

const CTableMember& CTableRecords::RecordOf(const CMember& member) const {
    for (const CTableMember& record : members) {
        if (record.member == &member) return record;
    }
    throw CKvInvalidParamException("The member is none of the class's table.");
}

int CTableRecords::MemberAt(const CTableClass& object, const void* place) const noexcept {
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (AddressOf(members[i].member->place, object) == place) return static_cast<int>(i);
    }
    return -1;
}

const CClassTable& CTableRecords::TypeOf(const CClassTable& table) noexcept {
    const CClassTable* at = &table;
    while ((at->flags & CClassTable::kRoot) != 0 && at->base != nullptr)
        at = at->base;
    return *at;
}

bool CTableRecords::IsDerived(const CClassTable& table, const CClassTable& base) noexcept {
    const CClassTable* at = &table;
    while (at != nullptr && at != &base)
        at = at->base;
    return at != nullptr;
}

}  // namespace KvXmlLib16::internal
