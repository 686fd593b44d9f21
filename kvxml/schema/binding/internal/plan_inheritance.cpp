// How a class that restricts its base uses the base's members; the rest of the builder is in
// plan_builder.cpp.
#include <set>

#include "kvxml/schema/binding/internal/plan_builder.h"

namespace KvXmlLib16 {

namespace {

using Kind = CMemberPlan::Kind;

/// The members that objects of the class have, those of its bases first.
std::vector<const CMemberPlan*> AllMembers(const CClassPlan& plan) {
    std::vector<const CMemberPlan*> all;
    std::vector<const CClassPlan*> chain;
    for (const CClassPlan* one = &plan; one != nullptr; one = one->base)
        chain.push_back(one);
    for (auto one = chain.rbegin(); one != chain.rend(); ++one) {
        for (const CMemberPlan& member : (*one)->members)
            if (member.inherited == nullptr) all.push_back(&member);
    }
    return all;
}

bool IsObject(Kind kind) {
    return kind == Kind::Object || kind == Kind::Objects;
}

/// Data of `base` can hold what `member` describes.
bool CanHold(const CMemberPlan& base, const CMemberPlan& member) {
    if (base.name != member.name) return false;
    if (base.kind == member.kind) return true;
    const bool isSingleOfMany = base.IsRepeated() && !member.IsRepeated();
    if (!isSingleOfMany) return false;
    return (base.kind == Kind::Values && member.kind == Kind::Value) ||
           (base.kind == Kind::Objects && member.kind == Kind::Object) ||
           (base.kind == Kind::Anys && member.kind == Kind::Any);
}

}  // namespace

void CPlanBuilder::Inherit(CClassPlan& plan) {
    const std::vector<const CMemberPlan*> inherited = AllMembers(*plan.base);
    std::set<const CMemberPlan*> used;
    std::vector<std::pair<CMemberPlan*, const CMemberPlan*>> pairs;
    for (CMemberPlan& member : plan.members) {
        const CMemberPlan* found = nullptr;
        for (const CMemberPlan* const one : inherited) {
            if (used.count(one) != 0 || !CanHold(*one, member)) continue;
            if (IsObject(member.kind) && one->classPlan != nullptr &&
                !IsDerivedFrom(member.classPlan, *one->classPlan))
                continue;
            found = one;
            break;
        }
        if (found == nullptr && member.IsElement()) {
            // Content of another shape than the base's: a class of its own, without the base.
            Lose(*plan.type, "the content is of another form than that of the base type [" +
                                 std::string(plan.base->xmlName.localName) +
                                 "]: the class does not derive from the base's");
            plan.base = nullptr;
            plan.isRestriction = false;
            return;
        }
        if (found == nullptr) continue;  // an attribute that the base admits by a wildcard
        used.insert(found);
        pairs.emplace_back(&member, found);
    }
    for (const auto& [member, base] : pairs) {
        member->inherited = base;
        if (member->kind != base->kind) {  // at most one of what may be many
            member->minOccurs = member->isRequired ? 1 : 0;
            member->maxOccurs = 1;
            member->kind = base->kind;
        }
        if (member->kind == Kind::Groups) {
            m_replaced.insert(member->classPlan);
            member->classPlan = base->classPlan;
        }
        if (member->value != nullptr && base->value != nullptr)
            member->value = &m_values.PlanHeldAs(*member->value->type, *base->value);
    }
}

}  // namespace KvXmlLib16
