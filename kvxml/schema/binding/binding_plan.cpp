#include "kvxml/schema/binding/binding_plan.h"

#include "kvxml/schema/binding/internal/plan_builder.h"

namespace KvXmlLib16 {

CBindingPlan::CBindingPlan(std::shared_ptr<const CSchemaSet> schema) : m_schema(std::move(schema)) {}

CBindingPlan::~CBindingPlan() = default;

std::shared_ptr<const CBindingPlan> CBindingPlan::Make(std::shared_ptr<const CSchemaSet> schema) {
    std::shared_ptr<CBindingPlan> plan(new CBindingPlan(std::move(schema)));
    CPlanBuilder(*plan).Build();
    return plan;
}

}  // namespace KvXmlLib16
