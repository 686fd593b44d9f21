#include "kvxml/objects/internal/table_judgement.h"

#include <cmath>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/internal/simple_element.h"
#include "kvxml/objects/internal/table_access.h"
#include "kvxml/objects/table_class.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/prefix_list.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16::internal {

namespace {

const CXmlAttribute* TypeAttributeOf(const CXmlElement& element) {
    for (const CXmlAttribute* attribute : element.GetAttributes()) {
        if (attribute->IsNamespaceAttribute() && attribute->GetLocalName() == "type") return attribute;
    }
    return nullptr;
}

bool IsNamed(const CClassTable& table, const CTypeName& name, const std::string* ns,
             const CSerializationContext& context) {
    if ((table.flags & CClassTable::kAnonymous) != 0 || name.local != table.name) return false;
    return context.GetIgnoreNamespaces() || (ns != nullptr && *ns == table.namespaceUri);
}

[[noreturn]] void ThrowAbstract(const CClassTable& table, const CXmlElement& element) {
    throw CKvValidationException(FormatString("The type [%s] of the element [%s] is abstract.", table.name,
                                              element.GetLocalName().c_str()),
                                 element.GetXPath());
}

[[noreturn]] void ThrowType(const CXmlAttribute& attribute) {
    throw CKvValidationException(
        FormatString("The type [%s] can not stand in for the type of the element [%s].",
                     attribute.GetValue().c_str(), attribute.GetElement()->GetLocalName().c_str()),
        attribute.GetElement()->GetXPath());
}

template <class T>
bool IsSame(const T& a, const T& b) {
    if constexpr (std::is_floating_point_v<T>) return a == b || (std::isnan(a) && std::isnan(b));
    return a == b;
}

}  // namespace

void CTableJudgement::SetText(CTableClass& object, const CTableMember& record, std::string_view text) {
    const CMember& member = *record.member;
    const std::string_view name = record.own.name.localName;
    if (record.value->IsPlainText()) {
        std::string scratch;
        member.place.String(object).assign(record.value->Normalized(text, scratch));
    } else if (record.IsList()) {
        member.place.Collection(object) = record.value->ParseList(name, text);
    } else {
        VisitHeldType(record.value->Item(), [&](auto* tag) {
            using T = std::remove_pointer_t<decltype(tag)>;
            PlaceIn<T>(member.place, object) = record.value->Parse<T>(name, text);
        });
    }
    if (member.isFixed) CheckFixed(object, record, text);
    if (member.bit != CMember::kNoBit) CTableAccess::Mark(object, member.bit, true);
}

void CTableJudgement::CheckFixed(const CTableClass& object, const CTableMember& record,
                                 std::string_view text) {
    const CMember& member = *record.member;
    if (!member.isFixed) return;
    bool isSame = true;
    if (record.IsList()) {
        isSame = member.place.Collection(object)->Equals(*record.defaultList);
    } else if (record.defaultValue.IsValid()) {
        VisitHeldType(record.value->Item(), [&](auto* tag) {
            using T = std::remove_pointer_t<decltype(tag)>;
            isSame = IsSame(PlaceIn<T>(member.place, object), CTableAccess::ValueOf<T>(record.defaultValue));
        });
    }
    if (isSame) return;
    throw CKvInvalidValueException(FormatString("Invalid Value for %s [%s]. The only value is [%s].",
                                                member.name, std::string(text).c_str(), member.defaultText));
}

bool CTableJudgement::JudgeValue(const CSerializationContext& context, const CXmlElement& element,
                                 bool isNillable) {
    const CXmlElement* const child = element.GetFirstElement();
    if (child != nullptr && !context.GetIgnoreUnknownElements()) ThrowRemains(element, *child);
    bool isNil = false;
    for (const CXmlAttribute* attribute : element.GetAttributes()) {
        if (attribute->IsNilAttribute()) {
            const std::optional<bool> value = ToNil(attribute->GetValueView());
            if (!value.has_value()) ThrowUnexpectedNil(*attribute);
            if (*value && !isNillable) ThrowNilNotAllowed(element);
            isNil = *value;
        } else if (attribute->IsNamespaceAttribute()) {
            std::string_view ns;
            if (attribute->GetLocalName() == "type" && !context.GetIgnoreNamespaces() &&
                !IsTypeValue(*attribute, ns))
                ThrowType(*attribute);
        } else if (!context.GetIgnoreUnknownAttributes()) {
            throw CKvValidationException("Unexpected Attribute found.", attribute->GetXPath());
        }
    }
    if (isNil && (child != nullptr || !element.GetTextView().empty())) {
        throw CKvValidationException(
            FormatString("The element [%s] is nil and must be empty.", element.GetLocalName().c_str()),
            element.GetXPath());
    }
    return isNil;
}

const CClassTable& CTableJudgement::ClassByType(const CClassTable& declared, const CXmlElement& element,
                                                const CSerializationContext& context) {
    const CXmlAttribute* const attribute = TypeAttributeOf(element);
    const CClassTable* chosen = &declared;
    if (attribute != nullptr) {
        const CTypeName name(attribute->GetValueView());
        const std::string* const ns = FindTypeNamespace(name, element);
        const CClassTable& type = CTableRecords::TypeOf(declared);
        if (!IsNamed(type, name, ns, context)) {
            chosen = nullptr;
            for (std::uint16_t i = 0; i < type.derivedCount && chosen == nullptr; ++i) {
                if (IsNamed(*type.derived[i], name, ns, context)) chosen = type.derived[i];
            }
            if (chosen == nullptr) ThrowType(*attribute);
        }
    }
    if (chosen->create == nullptr) ThrowAbstract(*chosen, element);
    return *chosen;
}

void CTableJudgement::RequireType(const CClassTable& table, const CXmlElement& element,
                                  const CSerializationContext& context) {
    const CXmlAttribute* const attribute = TypeAttributeOf(element);
    if (attribute == nullptr) return;
    const CTypeName name(attribute->GetValueView());
    if (!IsNamed(CTableRecords::TypeOf(table), name, FindTypeNamespace(name, element), context))
        ThrowType(*attribute);
}

std::string CTableJudgement::NamesOf(const CTableRecords& records, const CTableNode& node) {
    constexpr std::size_t kEnough = 500;
    std::string names;
    const auto add = [&](std::string_view name) {
        if (names.size() > kEnough) return;
        if (!names.empty()) names += ", ";
        names += names.size() > kEnough ? "..." : name;
    };
    for (const CTableNode& leaf : records.nodes) {
        if (leaf.kind != CContentNode::Kind::Member) continue;
        const CTableMember& member = records.members[leaf.member];
        if (node.HasName(member.nameId) && !member.member->isAbstract) add(member.Label());
        for (const auto& [id, index] : member.substituteOf) {
            if (node.HasName(id)) add(member.substitutes[index].name.localName);
        }
    }
    for (const std::uint16_t index : node.others) {
        const CTableMember& member = records.members[index];
        if (member.member->kind != CMember::Kind::Groups) {
            add(member.Label());
        } else {
            const CTableRecords& items = CTableRecords::Of(*member.member->classTable);
            if (!items.nodes.empty()) add(NamesOf(items, items.nodes[0]));
        }
    }
    return names;
}

void CTableJudgement::ThrowRemains(const CXmlElement& parent, const CXmlElement& element) {
    throw CKvValidationException(
        FormatString("Failed read all the elements held within the element [%s]. The unexpected element [%s] "
                     "remains un processed",
                     parent.GetLocalName().c_str(), element.GetLocalName().c_str()),
        parent.GetXPath());
}

}  // namespace KvXmlLib16::internal
