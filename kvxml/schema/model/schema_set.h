/// All components of one or more schema documents (XML Schema Part 1, 3.15).
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "kvxml/schema/model/declarations.h"
#include "kvxml/schema/model/particle.h"
#include "kvxml/schema/model/schema_export.h"
#include "kvxml/schema/model/type_definition.h"

namespace KvXmlLib16 {

namespace internal {
class CSchemaStore;
}

/// An immutable set of schema components, complete with the built-in ones. Made by CSchemaLoader and shared
/// by std::shared_ptr; any number of threads may use it at once.
class KVXML_SCHEMA_EXPORT CSchemaSet {
public:
    CSchemaSet(const CSchemaSet&) = delete;
    CSchemaSet& operator=(const CSchemaSet&) = delete;
    ~CSchemaSet();

    // Global components by name; null when there is none.
    const CElementDeclaration* FindElement(std::string_view namespaceUri,
                                           std::string_view localName) const noexcept;
    const CAttributeDeclaration* FindAttribute(std::string_view namespaceUri,
                                               std::string_view localName) const noexcept;
    const CTypeDefinition* FindType(std::string_view namespaceUri, std::string_view localName) const noexcept;
    const CModelGroupDefinition* FindModelGroup(std::string_view namespaceUri,
                                                std::string_view localName) const noexcept;
    const CAttributeGroupDefinition* FindAttributeGroup(std::string_view namespaceUri,
                                                        std::string_view localName) const noexcept;
    const CNotationDeclaration* FindNotation(std::string_view namespaceUri,
                                             std::string_view localName) const noexcept;
    const CIdentityConstraintDefinition* FindIdentityConstraint(std::string_view namespaceUri,
                                                                std::string_view localName) const noexcept;

    // Global components of the documents, in document order; built-in ones left out.
    const std::vector<const CElementDeclaration*>& GetElements() const noexcept;
    const std::vector<const CAttributeDeclaration*>& GetAttributes() const noexcept;
    const std::vector<const CTypeDefinition*>& GetTypes() const noexcept;
    const std::vector<const CModelGroupDefinition*>& GetModelGroups() const noexcept;
    const std::vector<const CAttributeGroupDefinition*>& GetAttributeGroups() const noexcept;
    const std::vector<const CNotationDeclaration*>& GetNotations() const noexcept;
    /// Every type definition, anonymous ones included, in document order.
    const std::vector<const CTypeDefinition*>& GetAllTypes() const noexcept;
    const std::vector<const CSchemaDocument*>& GetDocuments() const noexcept;
    /// Whether a document with this target namespace was read.
    bool HasNamespace(std::string_view namespaceUri) const noexcept;

    /// The ur-type.
    const CComplexTypeDefinition& GetAnyType() const noexcept;
    const CSimpleTypeDefinition& GetBuiltInType(BuiltInType type) const noexcept;

private:
    friend class internal::CSchemaStore;

    explicit CSchemaSet(std::unique_ptr<internal::CSchemaStore> store) noexcept;

    std::unique_ptr<internal::CSchemaStore> m_store;
};

}  // namespace KvXmlLib16
