/// Makes the plan of classes from components.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>

#include "kvxml/schema/binding/binding_plan.h"
#include "kvxml/schema/binding/internal/value_planner.h"

namespace KvXmlLib16 {

/// Fills a plan; one use. Depth of recursion is that of nested groups and types in the schema documents,
/// which their reader bounds.
class CPlanBuilder {
public:
    explicit CPlanBuilder(CBindingPlan& plan);
    void Build();

private:
    /// Where a particle stands among what is being flattened.
    struct Surroundings {
        bool isInChoice = false;
        bool isOfGroup = false;  // the element stands for itself, not for its substitution group
    };

    CClassPlan& NewClass(CClassPlan::Kind kind, CExpandedName name);
    CClassPlan& ClassOf(const CComplexTypeDefinition& type, const CElementDeclaration* element,
                        const CClassPlan* owner);
    void AddRoot(const CElementDeclaration& element);
    void Fill(CClassPlan& plan);

    void FindBase(CClassPlan& plan);
    void AddAttributes(CClassPlan& plan);
    void AddText(CClassPlan& plan);
    void AddContent(CClassPlan& plan);
    void AddAttribute(CClassPlan& plan, const CAttributeUse& use);
    void Flatten(CClassPlan& plan, const CParticle& particle, Surroundings where);
    void FlattenGroup(CClassPlan& plan, const CParticle& particle, Surroundings where);
    void AddElement(CClassPlan& plan, const CParticle& particle, const CElementDeclaration& element,
                    std::uint64_t min, std::uint64_t max, Surroundings where);
    void AddWildcard(CClassPlan& plan, const CParticle& particle, const CWildcard& wildcard,
                     std::uint64_t min, std::uint64_t max, Surroundings where);
    void AddGroups(CClassPlan& plan, const CParticle& particle, Surroundings where);
    void DescribeElement(CMemberPlan& member, const CClassPlan& plan, const CElementDeclaration& element,
                         bool isOfGroup);
    std::vector<const CElementDeclaration*> ElementsOfGroup(const CElementDeclaration& head) const;
    void AddUntypedHead(CClassPlan& plan, const CParticle& particle, const CElementDeclaration& head,
                        std::uint64_t min, std::uint64_t max, Surroundings where);
    CClassPlan& NewGroup(const CClassPlan& owner, const CParticle& particle);
    void AddGroupMember(CClassPlan& plan, const CClassPlan& group, std::uint64_t min, std::uint64_t max,
                        Surroundings where);
    void AddSubstitutes(CMemberPlan& member, const CElementDeclaration& head);
    CMemberPlan& Add(CClassPlan& plan, CMemberPlan member, bool isContent);
    void CheckSubstitutes();
    void Inherit(CClassPlan& plan);
    void ListDerived();
    void Lose(const CComponent& component, std::string what);

    CBindingPlan& m_plan;
    internal::CValuePlanner m_values;
    std::map<const CComplexTypeDefinition*, CClassPlan*> m_byType;
    std::deque<CClassPlan*> m_unfilled;
    std::set<const CClassPlan*> m_replaced;  // groups for which a class uses those of its base
};

}  // namespace KvXmlLib16
