#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

void CheckComplexTypes(CSchemaStore&, CFaultList&) {}

}  // namespace KvXmlLib16::internal
