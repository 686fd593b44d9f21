/// From the trees of schema documents to components.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "kvxml/schema/model/fault.h"
#include "kvxml/schema/reader/internal/schema_sources.h"

namespace KvXmlLib16::internal {

/// Makes the components of all sources in a store, in four steps, none of which recurses along references:
///
/// 1. every global component gets its object, so that names can be resolved to addresses;
/// 2. redefinitions take the place of what they redefine;
/// 3. every global component is filled from its element, local ones inside it made on the way;
/// 4. what depends on other components being complete (attribute uses and content of derived types, varieties
///    and checkers of simple types, substitution groups) is added in the order of dependence; circles are
///    faults.
class CComponentBuilder {
public:
    CComponentBuilder(CSchemaStore& store, CFaultList& faults);
    CComponentBuilder(const CComponentBuilder&) = delete;
    CComponentBuilder& operator=(const CComponentBuilder&) = delete;

    void Build(const std::vector<CSchemaSource*>& sources);

private:
    /// An element with the document that it is read for.
    struct At {
        const CSchemaSource* source;
        const CSchemaNode* node;
    };
    struct Global {
        CComponent* component;
        At at;
    };
    /// What is known of a complex type before its base is complete.
    struct PendingContent {
        bool isExtension = false;
        bool isSimpleContent = false;
        bool isMixed = false;
        CSimpleTypeDefinition* contentRestriction = nullptr;  ///< simple content: the type that restricts
        bool hasOwnContentType = false;                       ///< with `simpleType` inside
        At at{};
    };

    // component_builder.cpp: names and globals
    void Declare(const CSchemaSource& source);
    void DeclareOne(At at);
    template <class T>
    void DeclareIn(CSymbolSpace<T>& space, At at, T& component);
    void Redefine(const CSchemaSource& source, const CSchemaNode& redefine, const CSchemaSource& target);
    template <class T>
    void RedefineOne(CSymbolSpace<T>& space, At at, T& replacement, const CSchemaSource& target,
                     const char* constraint);
    void Fill(const Global& global);

    CSourcePlace Place(At at) const noexcept { return {at.source->document, at.node->line, at.node->column}; }
    void Fault(At at, std::string message, const char* constraint);
    void FaultAt(const CSourcePlace& place, std::string message, const char* constraint);
    void Begin(CComponent& component, At at);
    const CAnnotation* ReadAnnotation(At at);
    /// The name that a QName means at its place; false, with a fault, when the prefix is not declared or its
    /// namespace is not imported.
    bool ResolveName(At at, std::string_view text, CExpandedName& name);
    template <class T>
    T* Resolve(CSymbolSpace<T>& space, At at, std::string_view text, const char* what);
    /// As Resolve, but inside a redefinition the component that it replaces.
    const CTypeDefinition* ResolveType(At at, std::string_view text);
    const CSimpleTypeDefinition* ResolveSimpleType(At at, std::string_view text);

    // builder_declarations.cpp
    void FillElement(CElementDeclaration& element, At at);
    CElementDeclaration& MakeLocalElement(At at, const CComponent& scope);
    void FillAttribute(CAttributeDeclaration& attribute, At at);
    CAttributeUse* MakeAttributeUse(At at, const CComponent& scope);
    void FillNotation(CNotationDeclaration& notation, At at);
    void FillAttributeGroup(CAttributeGroupDefinition& group, At at);
    void FillIdentityConstraints(CElementDeclaration& element, At at);
    void FillIdentityConstraint(CIdentityConstraintDefinition& constraint, At at);
    void ReadValueConstraint(At at, CValueConstraint& constraint);
    struct Attributes {
        std::vector<const CAttributeUse*> uses;
        std::vector<const CAttributeGroupDefinition*> groups;
        const CWildcard* wildcard = nullptr;
    };
    Attributes ReadAttributes(At at, const CComponent& scope);
    CWildcard* MakeWildcard(At at);

    // builder_types.cpp
    CSimpleTypeDefinition& MakeAnonymousSimpleType(At at, const CComponent& context);
    CComplexTypeDefinition& MakeAnonymousComplexType(At at, const CComponent& context);
    void FillSimpleType(CSimpleTypeDefinition& type, At at);
    void FillSimpleRestriction(CSimpleTypeDefinition& type, At at);
    void ReadFacets(CSimpleTypeDefinition& type, At at);
    void FillComplexType(CComplexTypeDefinition& type, At at);
    void FillSimpleContent(CComplexTypeDefinition& type, At at, PendingContent& pending);
    void FillComplexContent(CComplexTypeDefinition& type, At at, PendingContent& pending);
    void ReadDerivation(CComplexTypeDefinition& type, At at, PendingContent& pending);
    void TakeAttributes(CComplexTypeDefinition& type, At at);

    // builder_particles.cpp
    CParticle* MakeParticle(At at, const CComponent& scope);
    CParticle* MakeGroupParticle(At at, const CComponent& scope);
    CModelGroup& MakeModelGroup(At at, const CComponent& scope);
    void FillModelGroup(CModelGroup& group, At at, const CComponent& scope);
    void FillModelGroupDefinition(CModelGroupDefinition& definition, At at);
    bool ReadOccurs(At at, CParticle& particle);

    // completion.cpp
    void Complete();
    void CompleteSimpleType(CSimpleTypeDefinition& type);
    void CompileChecker(CSimpleTypeDefinition& type);
    void CompleteElementTypes();
    void CompleteSubstitutionGroups();
    void CompleteKeyrefs();
    void CheckRedefinedGroups();
    void CutCircularGroups();

    // completion_types.cpp
    void CompleteAttributeGroup(CAttributeGroupDefinition& group);
    void AddUses(std::vector<const CAttributeUse*>& uses, const std::vector<const CAttributeUse*>& more,
                 const CComponent& owner, const char* constraint);
    /// The complete wildcard of 3.4.2: the own one, narrowed by those of the groups. Null: none.
    const CWildcard* CompleteWildcard(const CWildcard* own,
                                      const std::vector<const CAttributeGroupDefinition*>& groups,
                                      const CComponent& owner);
    void CompleteComplexType(CComplexTypeDefinition& type);
    void CompleteAttributes(CComplexTypeDefinition& type);
    void CompleteSimpleContent(CComplexTypeDefinition& type, const PendingContent& pending);
    void CompleteComplexContent(CComplexTypeDefinition& type, const PendingContent& pending);

    // xpath.cpp
    bool ReadXPath(At at, bool isField, CIdentityConstraintDefinition::XPath& path);

    CSchemaStore& m_store;
    CFaultList& m_faults;
    std::vector<Global> m_globals;
    std::unordered_map<const CComponent*, const CSchemaSource*> m_sourceOf;  // of globals
    /// Element of a redefinition to the component that it replaces.
    std::unordered_map<const CSchemaNode*, CComponent*> m_originals;
    /// Element by name that stands where a name is asked for, inside a redefinition.
    const CSchemaNode* m_redefining = nullptr;
    CExpandedName m_redefiningName;
    int m_usedOriginal = 0;  // how often
    std::unordered_map<const CComplexTypeDefinition*, PendingContent> m_pending;
    /// Types of simple content that get their base with the complex type that they belong to.
    std::unordered_set<const CSimpleTypeDefinition*> m_contentRestrictions;
    std::unordered_set<const CTypeDefinition*> m_broken;  // their base leads nowhere, which was reported
    std::vector<std::pair<CElementDeclaration*, At>>
        m_typeOfHead;  // elements that take the type of their head
    std::vector<std::pair<CIdentityConstraintDefinition*, At>> m_keyrefs;
    std::vector<std::pair<CAttributeGroupDefinition*, CAttributeGroupDefinition*>> m_redefinedAttributeGroups;
    std::vector<std::pair<CModelGroupDefinition*, CModelGroupDefinition*>> m_redefinedGroups;
};

}  // namespace KvXmlLib16::internal
