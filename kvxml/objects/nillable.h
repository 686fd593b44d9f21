/// Interface of generated classes whose element may carry xsi:nil.
#pragma once

#include "kvxml/export.h"

namespace KvXmlLib16 {

/// Implemented beside CXmlGeneratedClass by classes bound to nillable elements. A nil object has attributes
/// but no content: it is read up to its attributes and written as a start tag with xsi:nil="true".
class KVXML_EXPORT INillable {
public:
    virtual bool IsNil() const = 0;
    virtual void SetNil(bool nil) = 0;

protected:
    INillable() = default;
    INillable(const INillable&) = default;
    INillable& operator=(const INillable&) { return *this; }
    ~INillable() = default;
};

}  // namespace KvXmlLib16
