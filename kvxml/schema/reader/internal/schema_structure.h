/// Is a document structured as a schema document must be: the rules of the schema for schemas and the schema
/// representation constraints (src-...) that one element tells by itself (XML Schema Part 1, 3.x.2, 3.x.3 and
/// Appendix A).
#pragma once

#include "kvxml/schema/model/fault.h"
#include "kvxml/schema/reader/internal/schema_node.h"

namespace KvXmlLib16::internal {

/// Checks names, order and number of child elements, names, presence and lexical form of attributes, stray
/// characters, ids that stand twice, and the local src- rules (src-element.1 to .4, src-attribute.1 to .4,
/// src-ct, src-simple-type, src-enumeration...). Every fault is added with its place. True when there was
/// none; only then components are made from the tree, which relies on all that is checked here.
bool CheckSchemaStructure(const CSchemaTree& tree, const CSchemaDocument& document, CSchemaStore& store,
                          CFaultList& faults);

}  // namespace KvXmlLib16::internal
