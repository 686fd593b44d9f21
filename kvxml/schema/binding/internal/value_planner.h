/// How simple types are held.
#pragma once

#include <deque>
#include <map>
#include <utility>

#include "kvxml/schema/binding/binding_plan.h"

namespace KvXmlLib16::internal {

/// Makes the plans of simple types, each once.
class CValuePlanner {
public:
    CValuePlanner(std::deque<CValuePlan>& values, std::deque<CEnumPlan>& enumerations)
        : m_values(values), m_enumerations(enumerations) {}

    const CValuePlan& Plan(const CSimpleTypeDefinition& type);
    /// As `Plan`, held as `held` is: for a member that restricts one of another class.
    const CValuePlan& PlanHeldAs(const CSimpleTypeDefinition& type, const CValuePlan& held);

    /// As `Plan` for a member that holds one value as text: where many of a list type are held.
    const CValuePlan& PlanAsText(const CSimpleTypeDefinition& type);

private:
    CValuePlan Make(const CSimpleTypeDefinition& type);
    void MakeAtomic(const CSimpleTypeDefinition& type, CValuePlan& plan);
    const CEnumPlan& PlanEnumeration(const CSimpleTypeDefinition& type);

    std::deque<CValuePlan>& m_values;
    std::deque<CEnumPlan>& m_enumerations;
    std::map<const CSimpleTypeDefinition*, const CValuePlan*> m_byType;
    std::map<std::pair<const CSimpleTypeDefinition*, const CValuePlan*>, const CValuePlan*> m_heldAs;
    std::map<const CSimpleTypeDefinition*, const CValuePlan*> m_asText;
    std::map<const CSimpleTypeDefinition*, const CEnumPlan*> m_byEnumeration;
};

/// The kind that values of an atomic type are held as, facets apart.
ItemType ToItemType(BuiltInType type) noexcept;
/// The facets of the type and of all it is derived from, a built-in type's own rules included.
CFacetPlan CollectFacets(const CSimpleTypeDefinition& type);

}  // namespace KvXmlLib16::internal
