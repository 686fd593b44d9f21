#include "kvxml/runtime/class_factory_base.h"

#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

namespace {

constexpr const char* kXsiNamespace = "http://www.w3.org/2001/XMLSchema-instance";

}  // namespace

CClassfactoryBase::CClassfactoryBase() = default;
CClassfactoryBase::CClassfactoryBase(const CClassfactoryBase&) = default;
CClassfactoryBase& CClassfactoryBase::operator=(const CClassfactoryBase&) = default;
CClassfactoryBase::~CClassfactoryBase() = default;

std::string CClassfactoryBase::GetElementType(const CXmlElement* element) {
    const std::string& type = element->GetAttribute("type", kXsiNamespace);
    const std::size_t colon = type.find(':');
    return colon == std::string::npos ? type : type.substr(colon + 1);
}

std::string CClassfactoryBase::GetElementTypeNamespaceUri(const CXmlElement* element) {
    const std::string& type = element->GetAttribute("type", kXsiNamespace);
    const std::size_t colon = type.find(':');
    if (colon == std::string::npos) return std::string();
    return element->GetDocument()->LookupNamespaceFromAlias(type.substr(0, colon).c_str());
}

}  // namespace KvXmlLib16
