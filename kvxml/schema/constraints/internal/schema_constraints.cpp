#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

void CheckSchemaConstraints(CSchemaStore& store, CFaultList& faults) {
    CheckDeclarations(store, faults);
    CheckComplexTypes(store, faults);
    CheckContentModels(store, faults);
}

}  // namespace KvXmlLib16::internal
