#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

void CheckDeclarations(CSchemaStore&, CFaultList&) {}

}  // namespace KvXmlLib16::internal
