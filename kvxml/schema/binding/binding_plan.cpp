#include "kvxml/schema/binding/binding_plan.h"

#include "kvxml/schema/binding/internal/plan_builder.h"

namespace KvXmlLib16 {

bool CFacetPlan::IsEmpty() const noexcept {
    return patterns.empty() && length == -1 && minLength == -1 && maxLength == -1 && totalDigits == -1 &&
           fractionDigits == -1 && minInclusive.empty() && maxInclusive.empty() && minExclusive.empty() &&
           maxExclusive.empty() && enumeration.empty();
}

CBindingPlan::CBindingPlan(std::shared_ptr<const CSchemaSet> schema) : m_schema(std::move(schema)) {}

CBindingPlan::~CBindingPlan() = default;

std::shared_ptr<const CBindingPlan> CBindingPlan::Make(std::shared_ptr<const CSchemaSet> schema) {
    std::shared_ptr<CBindingPlan> plan(new CBindingPlan(std::move(schema)));
    CPlanBuilder(*plan).Build();
    return plan;
}

}  // namespace KvXmlLib16
