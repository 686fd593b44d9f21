#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

void CheckContentModels(CSchemaStore&, CFaultList&) {}

}  // namespace KvXmlLib16::internal
