/// Reading of objects that refuses what a schema refuses.
///
///     CSerializationContext context;
///     context.SetDocumentCheck(MakeDocumentCheck(schema));
///     orders->FromXmlFile("orders.xml", context);
#pragma once

#include <memory>

#include "kvxml/schema/model/schema_export.h"
#include "kvxml/schema/model/schema_set.h"
#include "kvxml/settings/document_check.h"

namespace KvXmlLib16 {

/// A check for CSerializationContext::SetDocumentCheck: each document is validated while it is read, and
/// refused with its first fault, a CKvSchemaValidationException "... (rule) at line %llu, column %llu"
/// (without the place where the format has no lines) with the path. `schema` must not be null. Any number of
/// threads and contexts may share it.
KVXML_SCHEMA_EXPORT std::shared_ptr<const CDocumentCheck> MakeDocumentCheck(
    std::shared_ptr<const CSchemaSet> schema);

}  // namespace KvXmlLib16
