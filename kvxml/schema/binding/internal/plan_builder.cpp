#include "kvxml/schema/binding/internal/plan_builder.h"

#include <algorithm>
#include <set>

#include "kvxml/schema/model/declarations.h"

namespace KvXmlLib16 {

namespace {

using Kind = CMemberPlan::Kind;

std::uint32_t ToBound(std::uint64_t count) {
    return count >= CMemberPlan::kUnbounded ? CMemberPlan::kUnbounded : static_cast<std::uint32_t>(count);
}

std::uint64_t Times(std::uint64_t a, std::uint64_t b) {
    if (a == 0 || b == 0) return 0;
    if (a == CParticle::kUnbounded || b == CParticle::kUnbounded || a > CParticle::kUnbounded / b)
        return CParticle::kUnbounded;
    return a * b;
}

bool IsNothing(const CParticle& particle) {
    if (particle.maxOccurs == 0) return true;
    const CModelGroup* const group = particle.AsGroup();
    if (group == nullptr || group->compositor == CModelGroup::Compositor::Choice) return false;
    return std::all_of(group->particles.begin(), group->particles.end(),
                       [](const CParticle* one) { return IsNothing(*one); });
}

/// The particles of the group that can hold anything.
std::vector<const CParticle*> Parts(const CModelGroup& group) {
    std::vector<const CParticle*> parts;
    for (const CParticle* const one : group.particles)
        if (!IsNothing(*one)) parts.push_back(one);
    return parts;
}

CContentPlan::Kind ToContentKind(CModelGroup::Compositor compositor) {
    switch (compositor) {
        case CModelGroup::Compositor::All:
            return CContentPlan::Kind::All;
        case CModelGroup::Compositor::Choice:
            return CContentPlan::Kind::Choice;
        default:
            return CContentPlan::Kind::Sequence;
    }
}

/// A sequence of all members needs no content model.
void DropPlainContent(CClassPlan& plan) {
    const auto isPlain = [&] {
        const CContentPlan& top = plan.content.front();
        return top.kind == CContentPlan::Kind::Sequence && !top.isOptional &&
               std::all_of(plan.content.begin() + 1, plan.content.end(),
                           [](const CContentPlan& node) { return node.kind == CContentPlan::Kind::Member; });
    };
    if (plan.content.size() == 1 || (!plan.content.empty() && isPlain())) plan.content.clear();
}

}  // namespace

CPlanBuilder::CPlanBuilder(CBindingPlan& plan) : m_plan(plan), m_values(plan.m_values, plan.m_enumerations) {}

void CPlanBuilder::Build() {
    const CSchemaSet& schema = *m_plan.m_schema;
    const auto fillAll = [&] {
        while (!m_unfilled.empty()) {
            CClassPlan& next = *m_unfilled.front();
            m_unfilled.pop_front();
            Fill(next);
        }
    };
    for (const CTypeDefinition* const type : schema.GetTypes()) {
        if (type->IsSimple()) {
            m_values.Plan(*type->AsSimple());
        } else {
            ClassOf(*type->AsComplex(), nullptr, nullptr);
        }
    }
    fillAll();
    for (const CElementDeclaration* const element : schema.GetElements())
        AddRoot(*element);
    fillAll();
    // Bases come before the classes that restrict them.
    std::set<const CClassPlan*> done;
    const auto inherit = [&](auto&& self, CClassPlan& plan) -> void {
        if (!done.insert(&plan).second) return;
        if (plan.base != nullptr) self(self, const_cast<CClassPlan&>(*plan.base));
        if (plan.isRestriction) Inherit(plan);
    };
    for (CClassPlan& plan : m_plan.m_classes)
        inherit(inherit, plan);
    const auto isReplaced = [&](const CClassPlan* one) {
        for (; one != nullptr; one = one->owner)
            if (m_replaced.count(one) != 0) return true;
        return false;
    };
    auto& order = m_plan.m_classOrder;
    order.erase(std::remove_if(order.begin(), order.end(), isReplaced), order.end());
    CheckSubstitutes();
    ListDerived();
}

void CPlanBuilder::Lose(const CComponent& component, std::string what) {
    CFault loss;
    if (component.place.document != nullptr) loss.file = std::string(component.place.document->file);
    loss.line = component.place.line;
    loss.column = component.place.column;
    loss.message = std::move(what);
    m_plan.m_losses.push_back(std::move(loss));
}

CClassPlan& CPlanBuilder::NewClass(CClassPlan::Kind kind, CExpandedName name) {
    CClassPlan& plan = m_plan.m_classes.emplace_back();
    plan.kind = kind;
    plan.xmlName = name;
    m_plan.m_classOrder.push_back(&plan);
    return plan;
}

CClassPlan& CPlanBuilder::ClassOf(const CComplexTypeDefinition& type, const CElementDeclaration* element,
                                  const CClassPlan* owner) {
    if (const auto found = m_byType.find(&type); found != m_byType.end()) return *found->second;
    const bool isAnonymous = type.IsAnonymous();
    CClassPlan& plan = NewClass(CClassPlan::Kind::Type, isAnonymous ? element->name : type.name);
    plan.type = &type;
    plan.isAnonymous = isAnonymous;
    plan.isAbstract = type.isAbstract;
    plan.isMixed = type.contentKind == CComplexTypeDefinition::ContentKind::Mixed;
    if (isAnonymous) {
        plan.element = element;
        plan.owner = owner;
    }
    m_byType[&type] = &plan;
    m_unfilled.push_back(&plan);
    return plan;
}

void CPlanBuilder::AddRoot(const CElementDeclaration& element) {
    if (const CSimpleTypeDefinition* const simple = element.typeDefinition->AsSimple()) {
        CClassPlan& plan = NewClass(CClassPlan::Kind::Simple, element.name);
        plan.element = &element;
        CMemberPlan text;
        text.kind = Kind::Text;
        text.isRequired = true;
        text.value = &m_values.Plan(*simple);
        text.valueConstraint = element.valueConstraint;
        plan.members.push_back(std::move(text));
        plan.isAnonymous = true;
        return;
    }
    const CComplexTypeDefinition& type = *element.typeDefinition->AsComplex();
    if (&type == &m_plan.m_schema->GetAnyType()) return;  // untyped, as anything is
    CClassPlan& plan = ClassOf(type, &element, nullptr);
    if (plan.isAnonymous && plan.element == &element) return;
    if (plan.isAbstract) return;
    CClassPlan& root = NewClass(CClassPlan::Kind::Root, element.name);
    root.element = &element;
    root.type = &type;
    root.base = &plan;
    root.isMixed = plan.isMixed;
}

void CPlanBuilder::Fill(CClassPlan& plan) {
    FindBase(plan);
    AddAttributes(plan);
    AddText(plan);
    AddContent(plan);
}

void CPlanBuilder::FindBase(CClassPlan& plan) {
    const CComplexTypeDefinition* const base = plan.type->baseTypeDefinition->AsComplex();
    if (base == nullptr || base == &m_plan.m_schema->GetAnyType()) return;
    // A base without a name is the one that a redefinition replaced, or stands in an element of its own.
    if (base->IsAnonymous() && m_byType.find(base) == m_byType.end()) return;
    CClassPlan& basePlan = ClassOf(*base, nullptr, nullptr);
    plan.base = &basePlan;
    plan.isRestriction = plan.type->derivationMethod == Derivation_Restriction;
}

void CPlanBuilder::AddAttributes(CClassPlan& plan) {
    const CComplexTypeDefinition& type = *plan.type;
    const bool extends = plan.base != nullptr && !plan.isRestriction;
    std::set<CExpandedName> inherited;
    if (extends)
        for (const CAttributeUse* const use : plan.base->type->attributeUses)
            inherited.insert(use->attributeDeclaration->name);
    for (const CAttributeUse* const use : type.attributeUses)
        if (inherited.count(use->attributeDeclaration->name) == 0) AddAttribute(plan, *use);
    if (type.attributeWildcard == nullptr || (extends && plan.base->type->attributeWildcard != nullptr))
        return;
    CMemberPlan member;
    member.kind = Kind::AnyAttributes;
    member.component = type.attributeWildcard;
    member.namespaces = std::string(type.attributeWildcard->namespaceText);
    const CSourcePlace& place = type.attributeWildcard->place;
    if (place.document != nullptr) member.targetNamespace = place.document->targetNamespace;
    plan.members.push_back(std::move(member));
}

void CPlanBuilder::AddAttribute(CClassPlan& plan, const CAttributeUse& use) {
    CMemberPlan member;
    member.kind = Kind::Attribute;
    member.name = use.attributeDeclaration->name;
    member.component = &use;
    member.isRequired = use.isRequired;
    member.value = &m_values.Plan(*use.attributeDeclaration->typeDefinition);
    member.valueConstraint = use.EffectiveValueConstraint();
    plan.members.push_back(std::move(member));
}

void CPlanBuilder::AddText(CClassPlan& plan) {
    const CComplexTypeDefinition& type = *plan.type;
    const bool extends = plan.base != nullptr && !plan.isRestriction;
    CMemberPlan member;
    member.kind = Kind::Text;
    if (type.contentKind == CComplexTypeDefinition::ContentKind::Simple) {
        if (extends) return;  // the base has it
        member.isRequired = true;
        member.value = &m_values.Plan(*type.simpleContent);
        plan.members.push_back(std::move(member));
    } else if (plan.isMixed) {
        if (extends && plan.base->isMixed) return;
        member.value = &m_values.Plan(m_plan.m_schema->GetBuiltInType(BuiltInType::String));
        plan.members.push_back(std::move(member));
        if (type.particle != nullptr && !IsNothing(*type.particle))
            Lose(type, "where the text of mixed content stands between the elements is not kept");
    }
}

void CPlanBuilder::AddContent(CClassPlan& plan) {
    const CComplexTypeDefinition& type = *plan.type;
    const bool extends = plan.base != nullptr && !plan.isRestriction;
    const CParticle* const particle = extends ? type.ownParticle : type.particle;
    if (particle == nullptr || IsNothing(*particle)) return;
    Flatten(plan, *particle, {});
    DropPlainContent(plan);
}

void CPlanBuilder::Flatten(CClassPlan& plan, const CParticle& particle, Surroundings where) {
    if (IsNothing(particle)) return;
    if (const CElementDeclaration* const element = particle.AsElement()) {
        AddElement(plan, particle, *element, particle.minOccurs, particle.maxOccurs, where);
    } else if (const CWildcard* const wildcard = particle.AsWildcard()) {
        AddWildcard(plan, particle, *wildcard, particle.minOccurs, particle.maxOccurs, where);
    } else {
        FlattenGroup(plan, particle, where);
    }
}

void CPlanBuilder::FlattenGroup(CClassPlan& plan, const CParticle& particle, Surroundings where) {
    const CModelGroup& group = *particle.AsGroup();
    const std::vector<const CParticle*> parts = Parts(group);
    const bool isEmptyChoice =
        parts.size() != group.particles.size() && group.compositor == CModelGroup::Compositor::Choice;
    if (parts.size() == 1 && !isEmptyChoice) {
        // One member: its bounds and the group's in one, where numbers can say it.
        const CParticle& only = *parts.front();
        const bool isExact = (only.minOccurs == 1 && only.maxOccurs == 1) || particle.maxOccurs == 1;
        const bool isOpen = only.minOccurs <= 1 && only.maxOccurs == CParticle::kUnbounded;
        const bool keepsMinimum = particle.minOccurs != 0 || only.minOccurs <= 1;
        if (only.AsGroup() == nullptr && keepsMinimum && (isExact || isOpen)) {
            const std::uint64_t min = Times(only.minOccurs, particle.minOccurs);
            const std::uint64_t max = Times(only.maxOccurs, particle.maxOccurs);
            if (const CElementDeclaration* const element = only.AsElement()) {
                AddElement(plan, only, *element, min, max, where);
            } else {
                AddWildcard(plan, only, *only.AsWildcard(), min, max, where);
            }
            return;
        }
    }
    if (particle.maxOccurs > 1) {
        AddGroups(plan, particle, where);
        return;
    }
    const std::size_t at = plan.content.size();
    CContentPlan node;
    node.kind = ToContentKind(group.compositor);
    node.isOptional = particle.minOccurs == 0 || isEmptyChoice;
    plan.content.push_back(node);
    if (node.kind == CContentPlan::Kind::Choice) where.isInChoice = true;
    for (const CParticle* const part : parts)
        Flatten(plan, *part, where);
    plan.content[at].size = static_cast<std::uint32_t>(plan.content.size() - at);
}

CMemberPlan& CPlanBuilder::Add(CClassPlan& plan, CMemberPlan member, bool isContent) {
    if (isContent) {
        CContentPlan node;
        node.kind = CContentPlan::Kind::Member;
        node.member = static_cast<std::uint32_t>(plan.members.size());
        plan.content.push_back(node);
    }
    plan.members.push_back(std::move(member));
    return plan.members.back();
}

/// The elements that may stand where the head is asked for, in document order: the head itself unless it is
/// abstract, and its substitutes.
std::vector<const CElementDeclaration*> CPlanBuilder::ElementsOfGroup(const CElementDeclaration& head) const {
    std::vector<const CElementDeclaration*> elements;
    std::vector<const CElementDeclaration*> open{&head};
    std::set<const CElementDeclaration*> seen;
    while (!open.empty()) {
        const CElementDeclaration& element = *open.back();
        open.pop_back();
        if (!seen.insert(&element).second) continue;
        open.insert(open.end(), element.substitutionGroupMembers.rbegin(),
                    element.substitutionGroupMembers.rend());
        if (!element.isAbstract && IsSubstitutable(element, head)) elements.push_back(&element);
    }
    return elements;
}

/// A head without a type has nothing in common with its substitutes: the group is a choice of them.
void CPlanBuilder::AddUntypedHead(CClassPlan& plan, const CParticle& particle,
                                  const CElementDeclaration& head, std::uint64_t min, std::uint64_t max,
                                  Surroundings where) {
    const auto addChoice = [&](CClassPlan& holder, bool isOptional) {
        const std::size_t at = holder.content.size();
        CContentPlan node;
        node.kind = CContentPlan::Kind::Choice;
        node.isOptional = isOptional;
        holder.content.push_back(node);
        for (const CElementDeclaration* const element : ElementsOfGroup(head))
            AddElement(holder, particle, *element, 1, 1, {true, true});
        holder.content[at].size = static_cast<std::uint32_t>(holder.content.size() - at);
    };
    if (max == 1) {
        addChoice(plan, min == 0);
        return;
    }
    CClassPlan& group = NewGroup(plan, particle);
    addChoice(group, false);
    AddGroupMember(plan, group, min, max, where);
}

void CPlanBuilder::AddElement(CClassPlan& plan, const CParticle& particle, const CElementDeclaration& element,
                              std::uint64_t min, std::uint64_t max, Surroundings where) {
    const bool isUntyped = element.typeDefinition == &m_plan.m_schema->GetAnyType();
    if (isUntyped && !element.substitutionGroupMembers.empty() && !where.isOfGroup) {
        AddUntypedHead(plan, particle, element, min, max, where);
        return;
    }
    CMemberPlan member;
    member.isInChoice = where.isInChoice;
    member.isRequired = min > 0 && max == 1;
    member.minOccurs = ToBound(min);
    member.maxOccurs = ToBound(max);
    const bool repeats = max != 1;
    if (element.typeDefinition->IsSimple()) {
        member.kind = repeats ? Kind::Values : Kind::Value;
    } else if (isUntyped) {
        member.kind = repeats ? Kind::Anys : Kind::Any;
    } else {
        member.kind = repeats ? Kind::Objects : Kind::Object;
    }
    DescribeElement(member, plan, element, where.isOfGroup);
    Add(plan, std::move(member), true);
}

void CPlanBuilder::DescribeElement(CMemberPlan& member, const CClassPlan& plan,
                                   const CElementDeclaration& element, bool isOfGroup) {
    member.name = element.name;
    member.component = &element;
    member.isNillable = element.isNillable;
    member.isAbstract = element.isAbstract;
    member.valueConstraint = element.valueConstraint;
    if (const CSimpleTypeDefinition* const simple = element.typeDefinition->AsSimple()) {
        const CValuePlan& value = m_values.Plan(*simple);
        const bool isManyLists = member.kind == Kind::Values && value.list != nullptr;
        member.value = isManyLists ? &m_values.PlanAsText(*simple) : &value;
    } else if (member.kind == Kind::Object || member.kind == Kind::Objects) {
        const CComplexTypeDefinition& type = *element.typeDefinition->AsComplex();
        member.classPlan = &ClassOf(type, &element, element.isGlobal ? nullptr : &plan);
    }
    if (element.isGlobal && !isOfGroup) AddSubstitutes(member, element);
}

void CPlanBuilder::AddSubstitutes(CMemberPlan& member, const CElementDeclaration& head) {
    for (const CElementDeclaration* const element : ElementsOfGroup(head)) {
        if (element == &head) continue;
        CSubstitutePlan substitute;
        substitute.element = element;
        if (const CComplexTypeDefinition* const type = element->typeDefinition->AsComplex())
            substitute.classPlan = &ClassOf(*type, element, nullptr);
        member.substitutes.push_back(substitute);
    }
}

void CPlanBuilder::AddWildcard(CClassPlan& plan, const CParticle&, const CWildcard& wildcard,
                               std::uint64_t min, std::uint64_t max, Surroundings where) {
    CMemberPlan member;
    member.kind = max == 1 ? Kind::Any : Kind::Anys;
    member.component = &wildcard;
    member.isInChoice = where.isInChoice;
    member.isRequired = min > 0 && max == 1;
    member.minOccurs = ToBound(min);
    member.maxOccurs = ToBound(max);
    member.namespaces = wildcard.namespaceText.empty() ? "##any" : std::string(wildcard.namespaceText);
    if (wildcard.place.document != nullptr) member.targetNamespace = wildcard.place.document->targetNamespace;
    Add(plan, std::move(member), true);
}

CClassPlan& CPlanBuilder::NewGroup(const CClassPlan& owner, const CParticle& particle) {
    CClassPlan& group = NewClass(CClassPlan::Kind::Group, owner.xmlName);
    group.particle = &particle;
    group.owner = &owner;
    group.isAnonymous = true;
    return group;
}

void CPlanBuilder::AddGroupMember(CClassPlan& plan, const CClassPlan& group, std::uint64_t min,
                                  std::uint64_t max, Surroundings where) {
    CMemberPlan member;
    member.kind = Kind::Groups;
    member.component = group.particle;
    member.isInChoice = where.isInChoice;
    member.minOccurs = ToBound(min);
    member.maxOccurs = ToBound(max);
    member.classPlan = &group;
    Add(plan, std::move(member), true);
}

void CPlanBuilder::AddGroups(CClassPlan& plan, const CParticle& particle, Surroundings where) {
    CClassPlan& group = NewGroup(plan, particle);
    CParticle once = particle;
    once.minOccurs = once.maxOccurs = 1;
    Flatten(group, once, {});
    DropPlainContent(group);
    AddGroupMember(plan, group, particle.minOccurs, particle.maxOccurs, where);
}

/// Substitutes that the head's class does not admit as an object: told, and left out.
void CPlanBuilder::CheckSubstitutes() {
    for (CClassPlan& plan : m_plan.m_classes) {
        for (CMemberPlan& member : plan.members) {
            const auto isUnfit = [&](const CSubstitutePlan& one) {
                const bool isObject = member.kind == Kind::Object || member.kind == Kind::Objects;
                if (isObject != (one.classPlan != nullptr)) return true;
                return isObject && !IsDerivedFrom(one.classPlan, *member.classPlan);
            };
            for (const CSubstitutePlan& one : member.substitutes)
                if (isUnfit(one))
                    Lose(*one.element, "the element [" + std::string(one.element->name.localName) +
                                           "] cannot stand in for [" + std::string(member.name.localName) +
                                           "]: its class does not derive from that one's");
            member.substitutes.erase(
                std::remove_if(member.substitutes.begin(), member.substitutes.end(), isUnfit),
                member.substitutes.end());
        }
    }
}

void CPlanBuilder::ListDerived() {
    for (const CClassPlan* const plan : m_plan.m_classOrder) {
        if (plan->kind != CClassPlan::Kind::Type || plan->isAnonymous) continue;
        for (const CClassPlan* base = plan->base; base != nullptr; base = base->base)
            const_cast<CClassPlan*>(base)->derived.push_back(plan);
    }
}

}  // namespace KvXmlLib16
