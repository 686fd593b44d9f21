/// The one header of libkvxml-schema: schema documents as components, validation of documents.
#pragma once

#include "kvxml/schema/model/fault.h"
#include "kvxml/schema/model/schema_set.h"
#include "kvxml/schema/reader/schema_loader.h"
#include "kvxml/schema/validation/document_check.h"
#include "kvxml/schema/validation/schema_validator.h"
