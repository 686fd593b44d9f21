/// Base of the generated class factory.
#pragma once

#include <string>

#include "kvxml/export.h"

namespace KvXmlLib16 {

class CXmlElement;

/// Offers generated factories the xsi:type of an element, from which they choose the class to create.
class KVXML_EXPORT CClassfactoryBase {
public:
    CClassfactoryBase();
    CClassfactoryBase(const CClassfactoryBase&);
    CClassfactoryBase& operator=(const CClassfactoryBase&);
    virtual ~CClassfactoryBase();

protected:
    /// Value of xsi:type without its prefix and the blanks around it; empty when the element has none.
    static std::string GetElementType(const CXmlElement* element);
    /// Namespace of the type that xsi:type names: what its prefix stands for at the element, and without a
    /// prefix the default namespace there. Empty when there is none.
    static std::string GetElementTypeNamespaceUri(const CXmlElement* element);
};

}  // namespace KvXmlLib16
