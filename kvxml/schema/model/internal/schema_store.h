/// Owner of the components of a set while it is being made, and afterwards behind CSchemaSet.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "kvxml/schema/model/schema_set.h"

namespace KvXmlLib16::internal {

struct CExpandedNameHash {
    std::size_t operator()(const CExpandedName& name) const noexcept {
        const std::hash<std::string_view> hash;
        return hash(name.localName) * 31 + hash(name.namespaceUri);
    }
};

/// Global components of one symbol space: by name, and in document order.
template <class T>
struct CSymbolSpace {
    std::unordered_map<CExpandedName, T*, CExpandedNameHash> byName;
    std::vector<const T*> ordered;

    T* Find(const CExpandedName& name) const {
        const auto found = byName.find(name);
        return found == byName.end() ? nullptr : found->second;
    }
    /// False, with nothing done, when the name is taken.
    bool Add(const CExpandedName& name, T* component) {
        if (!byName.emplace(name, component).second) return false;
        ordered.push_back(component);
        return true;
    }
};

/// Makes and owns components; their addresses stay. Built-in types and attributes of the instance namespace
/// are there from the start (schema_store.cpp); each store has its own, so that pointers never cross sets.
class CSchemaStore {
public:
    using Scope = std::vector<std::pair<std::string_view, std::string_view>>;

    CSchemaStore();
    CSchemaStore(const CSchemaStore&) = delete;
    CSchemaStore& operator=(const CSchemaStore&) = delete;
    ~CSchemaStore();

    /// A new component of the kind, numbered in order of the calls.
    template <class T>
    T& Make() {
        T& made = Pool<T>().emplace_back();
        made.order = m_nextOrder++;
        return made;
    }
    CAnnotation& MakeAnnotation() { return m_annotations.emplace_back(); }
    CSchemaDocument& MakeDocument();
    /// The text, kept once, for as long as the store lives.
    std::string_view Keep(std::string_view text);
    const Scope* KeepScope(Scope scope);

    CSimpleTypeDefinition& BuiltIn(BuiltInType type) noexcept {
        return *m_builtIn[static_cast<std::size_t>(type)];
    }
    CComplexTypeDefinition& AnyType() noexcept { return *m_anyType; }

    /// Makes the immutable set. Nothing may be changed afterwards.
    static std::shared_ptr<const CSchemaSet> Finish(std::unique_ptr<CSchemaStore> store);

    CSymbolSpace<CElementDeclaration> elements;
    CSymbolSpace<CAttributeDeclaration> attributes;
    CSymbolSpace<CTypeDefinition> types;
    CSymbolSpace<CModelGroupDefinition> modelGroups;
    CSymbolSpace<CAttributeGroupDefinition> attributeGroups;
    CSymbolSpace<CNotationDeclaration> notations;
    CSymbolSpace<CIdentityConstraintDefinition> identityConstraints;
    std::vector<const CTypeDefinition*> allTypes;
    std::vector<const CSchemaDocument*> documents;
    std::unordered_set<std::string_view> namespaces;

    /// The store of a set. Nothing in it may be changed.
    static CSchemaStore& Of(const CSchemaSet& set) noexcept { return *set.m_store; }
    /// What users make of the whole set, once for all of them; `T` is one type for all calls, made from the
    /// store. Any number of threads may call it at once.
    template <class T>
    const T& Derived() {
        std::call_once(m_derivedOnce, [this] { m_derived = std::make_shared<const T>(*this); });
        return *static_cast<const T*>(m_derived.get());
    }

    /// All components of a kind, local and anonymous ones included, in order of making.
    template <class T>
    std::deque<T>& Pool() noexcept;
    /// Greater than the order of every component.
    std::uint32_t GetOrderEnd() const noexcept { return m_nextOrder; }

private:
    void MakeBuiltIns();

    std::uint32_t m_nextOrder = 0;
    std::deque<CElementDeclaration> m_elements;
    std::deque<CAttributeDeclaration> m_attributes;
    std::deque<CAttributeUse> m_attributeUses;
    std::deque<CAttributeGroupDefinition> m_attributeGroups;
    std::deque<CSimpleTypeDefinition> m_simpleTypes;
    std::deque<CComplexTypeDefinition> m_complexTypes;
    std::deque<CModelGroup> m_groups;
    std::deque<CModelGroupDefinition> m_groupDefinitions;
    std::deque<CParticle> m_particles;
    std::deque<CWildcard> m_wildcards;
    std::deque<CIdentityConstraintDefinition> m_identityConstraints;
    std::deque<CNotationDeclaration> m_notations;
    std::deque<CFacet> m_facets;
    std::deque<CAnnotation> m_annotations;
    std::deque<CSchemaDocument> m_documents;
    std::deque<Scope> m_scopes;
    std::unordered_set<std::string> m_texts;
    CSimpleTypeDefinition* m_builtIn[kBuiltInTypeCount] = {};
    CComplexTypeDefinition* m_anyType = nullptr;
    std::once_flag m_derivedOnce;
    std::shared_ptr<const void> m_derived;
};

template <>
inline std::deque<CElementDeclaration>& CSchemaStore::Pool() noexcept {
    return m_elements;
}
template <>
inline std::deque<CAttributeDeclaration>& CSchemaStore::Pool() noexcept {
    return m_attributes;
}
template <>
inline std::deque<CAttributeUse>& CSchemaStore::Pool() noexcept {
    return m_attributeUses;
}
template <>
inline std::deque<CAttributeGroupDefinition>& CSchemaStore::Pool() noexcept {
    return m_attributeGroups;
}
template <>
inline std::deque<CSimpleTypeDefinition>& CSchemaStore::Pool() noexcept {
    return m_simpleTypes;
}
template <>
inline std::deque<CComplexTypeDefinition>& CSchemaStore::Pool() noexcept {
    return m_complexTypes;
}
template <>
inline std::deque<CModelGroup>& CSchemaStore::Pool() noexcept {
    return m_groups;
}
template <>
inline std::deque<CModelGroupDefinition>& CSchemaStore::Pool() noexcept {
    return m_groupDefinitions;
}
template <>
inline std::deque<CParticle>& CSchemaStore::Pool() noexcept {
    return m_particles;
}
template <>
inline std::deque<CWildcard>& CSchemaStore::Pool() noexcept {
    return m_wildcards;
}
template <>
inline std::deque<CIdentityConstraintDefinition>& CSchemaStore::Pool() noexcept {
    return m_identityConstraints;
}
template <>
inline std::deque<CNotationDeclaration>& CSchemaStore::Pool() noexcept {
    return m_notations;
}
template <>
inline std::deque<CFacet>& CSchemaStore::Pool() noexcept {
    return m_facets;
}

}  // namespace KvXmlLib16::internal
