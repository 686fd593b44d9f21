/// Documents that follow a schema, and what becomes of them by mistakes.
#pragma once

#include <string>

#include "kvxml/schema/model/schema_set.h"
#include "tests/oracle/random_numbers.h"

namespace oracle {

/// A document for the element `root`: valid but for texts that no sample fits, then changed in `mistakes`
/// places. Empty when the schema has no such element.
std::string RandomDocument(const KvXmlLib16::CSchemaSet& schema, CRandom& random, std::size_t mistakes);

}  // namespace oracle
