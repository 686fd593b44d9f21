#include "tools/kvxml/generate/code_model.h"

#include <algorithm>
#include <filesystem>

namespace tool::generate {

namespace {

using Kind = CMemberPlan::Kind;

/// Names that accessors of the base class have taken, without Get, Set, Has, Is and so on.
const char* const kTakenMembers[] = {"Base",
                                     "Namespace",
                                     "TargetNamespace",
                                     "ClassTable",
                                     "ElementName",
                                     "ClassInfo",
                                     "ClassElementInfo",
                                     "ClassAttributeInfo",
                                     "ClassElementInfoCount",
                                     "UsedProperties",
                                     "Nil",
                                     "ElementNameText",
                                     "ElementNameView",
                                     "Set",
                                     "Property"};

std::string FileStem(std::string_view file) {
    return std::filesystem::path(std::string(file)).stem().string();
}

}  // namespace

std::string TypeOfItem(ItemType item) {
    switch (item) {
        case ItemType_hexBinary:
        case ItemType_base64Binary:
            return "KvXmlLib16::CBinaryData";
        case ItemType_i1:
            return "std::int8_t";
        case ItemType_i2:
            return "std::int16_t";
        case ItemType_i4:
            return "std::int32_t";
        case ItemType_i8:
            return "std::int64_t";
        case ItemType_ui1:
        case ItemType_month:
        case ItemType_day:
            return "std::uint8_t";
        case ItemType_ui2:
        case ItemType_year:
            return "std::uint16_t";
        case ItemType_ui4:
            return "std::uint32_t";
        case ItemType_ui8:
            return "std::uint64_t";
        case ItemType_r4:
            return "float";
        case ItemType_r8:
            return "double";
        case ItemType_duration:
            return "KvXmlLib16::CDateTimeSpan";
        case ItemType_yearMonth:
        case ItemType_monthDay:
        case ItemType_date:
        case ItemType_datetime:
        case ItemType_time:
            return "KvXmlLib16::CDateTime";
        case ItemType_boolean:
            return "bool";
        case ItemType_decimal:
            return "KvXmlLib16::CDecimal";
        case ItemType_integer:
            return "KvXmlLib16::CBigInteger";
        default:
            return "std::string";
    }
}

bool IsPassedByValue(const CValuePlan& value) {
    if (value.enumeration != nullptr) return true;
    const std::string type = TypeOfItem(value.item);
    return type.find("KvXmlLib16") == std::string::npos && type != "std::string";
}

CCodeModel::CCodeModel(std::shared_ptr<const CBindingPlan> plan, const CodeOptions& options)
    : m_plan(std::move(plan)), m_options(options) {
    for (const auto& [uri, name] : options.namespaces) {
        m_scopes[uri] = name;
        m_scopeNames.Reserve(name);
    }
    m_mainScope = ScopeOf(m_plan->GetSchema().GetDocuments().front()->targetNamespace);
    NameClasses();
    NameGroups();
    NameEnumerations();
    for (const CClassPlan* const one : m_plan->GetClasses())
        Place(*one);
}

std::string CCodeModel::ScopeOf(std::string_view namespaceUri) {
    if (const auto found = m_scopes.find(namespaceUri); found != m_scopes.end()) return found->second;
    std::string stem;
    for (const CSchemaDocument* const document : m_plan->GetSchema().GetDocuments()) {
        if (document->targetNamespace != namespaceUri) continue;
        stem = FileStem(document->file);
        break;
    }
    std::string name = ToPascal(stem);
    if (name.empty()) name = "Schema";
    if (name == "KvXmlLib16" || name == "KvXmlLib16Data" || name == "Std") name += "Classes";
    name = m_scopeNames.Take(name);
    m_scopes.emplace(namespaceUri, name);
    return name;
}

std::string CCodeModel::Renamed(const std::string& path, const std::string& name) {
    for (const auto& [from, to] : m_options.renames) {
        if (from != path) continue;
        m_usedRenames.insert(from);
        return to;
    }
    return name;
}

std::vector<std::string> CCodeModel::GetUnusedRenames() const {
    std::vector<std::string> unused;
    for (const auto& [from, to] : m_options.renames)
        if (m_usedRenames.count(from) == 0) unused.push_back(from);
    return unused;
}

void CCodeModel::NameClass(const CClassPlan& plan, const std::string& wanted, const std::string& second) {
    auto& one = *m_classes.emplace_back(std::make_unique<CppClass>());
    one.plan = &plan;
    one.scope = ScopeOf(plan.xmlName.namespaceUri);
    CNameScope& names = m_names[one.scope];
    one.name = names.Take(names.Has(wanted) && !second.empty() ? second : wanted);
    m_byPlan[&plan] = &one;
}

/// Types with names come first, then the elements, then what has no name, so that a schema that grows keeps
/// the names that it has.
void CCodeModel::NameClasses() {
    using ClassKind = CClassPlan::Kind;
    const auto each = [&](auto isWanted, auto name) {
        for (const CClassPlan* const one : m_plan->GetClasses())
            if (isWanted(*one)) name(*one);
    };
    const auto plain = [&](const CClassPlan& one) {
        const std::string xml(one.xmlName.localName);
        const std::string name = "C" + Renamed(xml, ToPascal(xml));
        NameClass(one, name, name + "Element");
    };
    each([](const CClassPlan& one) { return one.kind == ClassKind::Type && !one.isAnonymous; }, plain);
    each(
        [](const CClassPlan& one) {
            const bool isElement = one.kind == ClassKind::Root || one.kind == ClassKind::Simple;
            return isElement || (one.kind == ClassKind::Type && one.isAnonymous && one.owner == nullptr);
        },
        plain);
    each([](const CClassPlan& one) { return one.kind == ClassKind::Type && one.owner != nullptr; },
         [&](const CClassPlan& one) {
             const CClassPlan* owner = one.owner;
             while (owner->kind == ClassKind::Group)
                 owner = owner->owner;
             const std::string path = GetNamePath(*one.type);
             const std::string own = ToPascal(one.xmlName.localName);
             const auto known = m_byPlan.find(owner);
             const std::string front = known == m_byPlan.end() ? "C" : known->second->name;
             NameClass(one, Renamed(path, front + own), "");
         });
}

std::string CCodeModel::GroupName(const CClassPlan& group) const {
    if (group.particle->modelGroupDefinition != nullptr)
        return ToPascal(group.particle->modelGroupDefinition->name.localName);
    if (const CElementDeclaration* const head = group.particle->AsElement())
        return ToPascal(head->name.localName);  // of a substitution group
    switch (group.particle->AsGroup()->compositor) {
        case CModelGroup::Compositor::Choice:
            return "Choice";
        case CModelGroup::Compositor::All:
            return "All";
        default:
            return "Sequence";
    }
}

void CCodeModel::NameGroups() {
    for (const CClassPlan* const one : m_plan->GetClasses()) {
        if (one->kind == CClassPlan::Kind::Group)
            NameClass(*one, m_byPlan.at(one->owner)->name + GroupName(*one), "");
    }
}

void CCodeModel::NameEnumerations() {
    for (const CEnumPlan& plan : m_plan->GetEnumerations()) {
        auto& one = *m_enums.emplace_back(std::make_unique<CppEnum>());
        one.plan = &plan;
        const std::string_view file =
            plan.type->place.document != nullptr ? plan.type->place.document->targetNamespace : "";
        one.scope = ScopeOf(plan.type->IsAnonymous() ? file : plan.type->name.namespaceUri);
        const std::string path = GetNamePath(*plan.type);
        const std::string name =
            plan.type->IsAnonymous() ? ToPascal(path) : ToPascal(plan.type->name.localName);
        one.name = m_names[one.scope].Take("E" + Renamed(path, name));
        CNameScope enumerators;
        for (const CEnumPlan::Value& value : plan.values) {
            const std::string text(value.text);
            one.enumerators.push_back(enumerators.Take(Renamed(path + "/" + text, ToEnumerator(value.text))));
        }
        m_byEnum[&plan] = &one;
    }
}

void CCodeModel::Place(const CClassPlan& plan) {
    if (!m_placed.insert(&plan).second) return;
    CppClass& one = *m_byPlan.at(&plan);
    if (plan.base != nullptr) {
        Place(*plan.base);
        one.base = m_byPlan.at(plan.base);
        one.names = one.base->names;
        one.bits = one.base->bits;
    } else {
        for (const char* const name : kTakenMembers)
            one.names.Reserve(name);
    }
    NameMembers(one);
    m_order.push_back(&one);
}

void CCodeModel::NameMembers(CppClass& one) {
    for (const CMemberPlan& plan : one.plan->members) {
        CppMember& member = one.members.emplace_back();
        member.plan = &plan;
    }
    // Elements before attributes, whose names give way.
    for (const bool areElements : {true, false}) {
        for (CppMember& member : one.members) {
            if (member.plan->IsElement() == areElements && member.plan->inherited == nullptr)
                NameMember(one, member);
        }
    }
    for (CppMember& member : one.members) {
        if (member.plan->inherited == nullptr) {
            if (!IsScalar(*member.plan)) continue;
            member.bit = static_cast<std::uint16_t>(one.bits++);
            if (member.plan->isNillable) member.nilBit = static_cast<std::uint16_t>(one.bits++);
            continue;
        }
        for (const CppClass* base = one.base; base != nullptr; base = base->base) {
            for (const CppMember& other : base->members) {
                if (other.plan != member.plan->inherited) continue;
                const CMemberPlan* const plan = member.plan;
                member = other;
                member.plan = plan;
            }
        }
    }
}

void CCodeModel::NameMember(CppClass& one, CppMember& member) {
    const CMemberPlan& plan = *member.plan;
    std::string wanted;
    switch (plan.kind) {
        case Kind::Text:
            wanted = one.plan->isMixed ? "Text" : "Value";
            break;
        case Kind::AnyAttributes:
            wanted = "AnyAttribute";
            break;
        case Kind::Groups:
            wanted = GroupName(*plan.classPlan);
            break;
        default:
            wanted = plan.name.localName.empty() ? "Any" : ToPascal(plan.name.localName);
    }
    if (wanted.empty()) wanted = "Member";
    const std::string path = plan.component != nullptr && !plan.name.localName.empty()
                                 ? std::string(one.plan->xmlName.localName) +
                                       (plan.kind == Kind::Attribute ? "/@" : "/") +
                                       std::string(plan.name.localName)
                                 : std::string();
    if (!path.empty()) wanted = Renamed(path, wanted);
    if (plan.kind == Kind::Attribute && one.names.Has(wanted)) wanted += "Attribute";
    member.name = one.names.Take(wanted);
    member.variable = ToMemberVariable(member.name);
}

std::vector<const CppClass*> CCodeModel::GetRoots() const {
    std::vector<const CppClass*> roots;
    for (const CppClass* const one : m_order) {
        const CClassPlan& plan = *one->plan;
        if (plan.element != nullptr && plan.owner == nullptr && !plan.isAbstract && plan.element->isGlobal)
            roots.push_back(one);
    }
    return roots;
}

std::string CCodeModel::ValueType(const CValuePlan& value) const {
    if (value.list != nullptr) return ValueType(*value.list);
    return value.enumeration != nullptr ? EnumOf(*value.enumeration).Qualified() : TypeOfItem(value.item);
}

}  // namespace tool::generate
