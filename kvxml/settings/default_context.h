/// The context of calls that pass none, for headers that know the class by its name only.
#pragma once

#include "kvxml/export.h"

namespace KvXmlLib16 {

class CSerializationContext;

/// CSerializationContext::GetDefaultContext().
KVXML_EXPORT CSerializationContext& DefaultContext();

}  // namespace KvXmlLib16
