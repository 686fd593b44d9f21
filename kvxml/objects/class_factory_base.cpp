#include "kvxml/objects/class_factory_base.h"

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

namespace {}  // namespace

CClassfactoryBase::CClassfactoryBase() = default;
CClassfactoryBase::CClassfactoryBase(const CClassfactoryBase&) = default;
CClassfactoryBase& CClassfactoryBase::operator=(const CClassfactoryBase&) = default;
CClassfactoryBase::~CClassfactoryBase() = default;

std::string CClassfactoryBase::GetElementType(const CXmlElement* element) {
    const std::string& type = element->GetAttribute("type", internal::kInstanceNamespace);
    const std::size_t colon = type.find(':');
    return colon == std::string::npos ? type : type.substr(colon + 1);
}

std::string CClassfactoryBase::GetElementTypeNamespaceUri(const CXmlElement* element) {
    const std::string& type = element->GetAttribute("type", internal::kInstanceNamespace);
    const std::size_t colon = type.find(':');
    if (colon == std::string::npos) return std::string();
    return element->GetDocument()->LookupNamespaceFromAlias(type.substr(0, colon).c_str());
}

}  // namespace KvXmlLib16
