/// Settings of Fast Infoset input and output, held by the serialization context.
#pragma once

#include "kvxml/export.h"

namespace KvXmlLib16 {

/// Has no settings yet; it exists so that settings can be added without a change of the interface. A plain
/// value; the one inside a serialization context is shared by the context's copies.
class KVXML_EXPORT CFastInfosetContext {
public:
    CFastInfosetContext();
    ~CFastInfosetContext();
    CFastInfosetContext(const CFastInfosetContext& other);
    CFastInfosetContext& operator=(const CFastInfosetContext& other);
};

}  // namespace KvXmlLib16
