/// The schema representation constraints (src-...) that an element and its children tell by themselves.
#pragma once

#include <string>

#include "kvxml/schema/reader/internal/schema_node.h"
#include "kvxml/schema/reader/internal/structure_tables.h"

namespace KvXmlLib16::internal {

/// Takes what is wrong with an element.
class IStructureReport {
public:
    virtual ~IStructureReport() = default;
    virtual void Report(const CSchemaNode& node, std::string message, const char* constraint) = 0;
};

/// What tables cannot say: attributes and children that exclude or need each other.
void CheckLocalRules(const CSchemaNode& node, Construct construct, IStructureReport& report);

}  // namespace KvXmlLib16::internal
