#include "kvxml/objects/class_factory_base.h"

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/xml/internal/prefix_list.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

using internal::CTypeName;

namespace {

CTypeName TypeOf(const CXmlElement& element) {
    return CTypeName(element.GetAttribute("type", internal::kInstanceNamespace));
}

}  // namespace

CClassfactoryBase::CClassfactoryBase() = default;
CClassfactoryBase::CClassfactoryBase(const CClassfactoryBase&) = default;
CClassfactoryBase& CClassfactoryBase::operator=(const CClassfactoryBase&) = default;
CClassfactoryBase::~CClassfactoryBase() = default;

std::string CClassfactoryBase::GetElementType(const CXmlElement* element) {
    return std::string(TypeOf(*element).local);
}

std::string CClassfactoryBase::GetElementTypeNamespaceUri(const CXmlElement* element) {
    const CTypeName type = TypeOf(*element);
    if (type.local.empty()) return std::string();
    const std::string* const found = internal::FindTypeNamespace(type, *element);
    return found == nullptr ? std::string() : *found;
}

}  // namespace KvXmlLib16
