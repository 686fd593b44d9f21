#include "kvxml/schema/reader/internal/schema_structure.h"

namespace KvXmlLib16::internal {

bool CheckSchemaStructure(const CSchemaTree& tree, const CSchemaDocument&, CSchemaStore&, CFaultList&) {
    return tree.GetRoot() != nullptr;
}

}  // namespace KvXmlLib16::internal
