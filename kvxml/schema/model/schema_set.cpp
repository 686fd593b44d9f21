#include "kvxml/schema/model/schema_set.h"

#include <string>
#include <utility>
#include <vector>

#include "kvxml/schema/model/internal/schema_store.h"

namespace KvXmlLib16 {

bool IsDerivedFrom(const CTypeDefinition& type, const CTypeDefinition& base) noexcept {
    for (const CTypeDefinition* at = &type; at != nullptr; at = at->baseTypeDefinition) {
        if (at == &base) return true;
    }
    return false;
}

std::string GetNamePath(const CComponent& component) {
    std::vector<std::string> names;  // from the inside out
    for (const CComponent* at = &component; at != nullptr;) {
        const CComponent* outer = nullptr;
        switch (at->kind) {
            case ComponentKind::ElementDeclaration: {
                const auto& element = static_cast<const CElementDeclaration&>(*at);
                names.emplace_back(element.name.localName);
                outer = element.scope;
                break;
            }
            case ComponentKind::AttributeDeclaration: {
                const auto& attribute = static_cast<const CAttributeDeclaration&>(*at);
                names.push_back("@" + std::string(attribute.name.localName));
                outer = attribute.scope;
                break;
            }
            case ComponentKind::SimpleTypeDefinition:
            case ComponentKind::ComplexTypeDefinition: {
                const auto& type = static_cast<const CTypeDefinition&>(*at);
                if (!type.IsAnonymous()) names.emplace_back(type.name.localName);
                outer = type.context;
                break;
            }
            case ComponentKind::ModelGroupDefinition:
                names.emplace_back(static_cast<const CModelGroupDefinition&>(*at).name.localName);
                break;
            case ComponentKind::AttributeGroupDefinition:
                names.emplace_back(static_cast<const CAttributeGroupDefinition&>(*at).name.localName);
                break;
            default:
                break;
        }
        at = outer;
    }
    std::string path;
    for (auto name = names.rbegin(); name != names.rend(); ++name)
        path += (path.empty() ? "" : "/") + *name;
    return path;
}

CSchemaSet::CSchemaSet(std::unique_ptr<internal::CSchemaStore> store) noexcept : m_store(std::move(store)) {}
CSchemaSet::~CSchemaSet() = default;

const CElementDeclaration* CSchemaSet::FindElement(std::string_view uri,
                                                   std::string_view name) const noexcept {
    return m_store->elements.Find({uri, name});
}
const CAttributeDeclaration* CSchemaSet::FindAttribute(std::string_view uri,
                                                       std::string_view name) const noexcept {
    return m_store->attributes.Find({uri, name});
}
const CTypeDefinition* CSchemaSet::FindType(std::string_view uri, std::string_view name) const noexcept {
    return m_store->types.Find({uri, name});
}
const CModelGroupDefinition* CSchemaSet::FindModelGroup(std::string_view uri,
                                                        std::string_view name) const noexcept {
    return m_store->modelGroups.Find({uri, name});
}
const CAttributeGroupDefinition* CSchemaSet::FindAttributeGroup(std::string_view uri,
                                                                std::string_view name) const noexcept {
    return m_store->attributeGroups.Find({uri, name});
}
const CNotationDeclaration* CSchemaSet::FindNotation(std::string_view uri,
                                                     std::string_view name) const noexcept {
    return m_store->notations.Find({uri, name});
}
const CIdentityConstraintDefinition* CSchemaSet::FindIdentityConstraint(
    std::string_view uri, std::string_view name) const noexcept {
    return m_store->identityConstraints.Find({uri, name});
}

const std::vector<const CElementDeclaration*>& CSchemaSet::GetElements() const noexcept {
    return m_store->elements.ordered;
}
const std::vector<const CAttributeDeclaration*>& CSchemaSet::GetAttributes() const noexcept {
    return m_store->attributes.ordered;
}
const std::vector<const CTypeDefinition*>& CSchemaSet::GetTypes() const noexcept {
    return m_store->types.ordered;
}
const std::vector<const CModelGroupDefinition*>& CSchemaSet::GetModelGroups() const noexcept {
    return m_store->modelGroups.ordered;
}
const std::vector<const CAttributeGroupDefinition*>& CSchemaSet::GetAttributeGroups() const noexcept {
    return m_store->attributeGroups.ordered;
}
const std::vector<const CNotationDeclaration*>& CSchemaSet::GetNotations() const noexcept {
    return m_store->notations.ordered;
}
const std::vector<const CTypeDefinition*>& CSchemaSet::GetAllTypes() const noexcept {
    return m_store->allTypes;
}
const std::vector<const CSchemaDocument*>& CSchemaSet::GetDocuments() const noexcept {
    return m_store->documents;
}
bool CSchemaSet::HasNamespace(std::string_view uri) const noexcept {
    return m_store->namespaces.count(uri) != 0;
}
const CComplexTypeDefinition& CSchemaSet::GetAnyType() const noexcept {
    return m_store->AnyType();
}
const CSimpleTypeDefinition& CSchemaSet::GetBuiltInType(BuiltInType type) const noexcept {
    return m_store->BuiltIn(type);
}

}  // namespace KvXmlLib16
