// What depends on other components: simple types, circles of groups, types of substitution groups, keyrefs.
#include <algorithm>

#include "kvxml/schema/constraints/internal/schema_constraints.h"
#include "kvxml/schema/datatypes/internal/simple_type_checker.h"
#include "kvxml/schema/reader/internal/component_builder.h"
#include "kvxml/schema/reader/internal/dependence.h"

namespace KvXmlLib16::internal {

namespace {

std::string NameOf(const CComponent& component) {
    const std::string path = GetNamePath(component);
    return "[" + (path.empty() ? "anonymous" : path) + "]";
}

std::string TooLong(const CComponent& component) {
    return "The definition " + NameOf(component) + " stands at the end of a chain of more than " +
           std::to_string(kMaxDependence) + " definitions.";
}

template <class T>
T* Mutable(const T* component) noexcept {
    return const_cast<T*>(component);  // made by this reader, and const only to the outside
}

}  // namespace

void CComponentBuilder::Complete() {
    InOrderOfDependence<CSimpleTypeDefinition>(
        m_store.Pool<CSimpleTypeDefinition>(),
        [](CSimpleTypeDefinition& type) {
            std::vector<CSimpleTypeDefinition*> needs;
            const auto add = [&](const CTypeDefinition* need) {
                if (need != nullptr && need->IsSimple()) needs.push_back(Mutable(need->AsSimple()));
            };
            add(type.baseTypeDefinition);
            add(type.itemTypeDefinition);
            for (const CSimpleTypeDefinition* member : type.memberTypeDefinitions)
                add(member);
            return needs;
        },
        [this](CSimpleTypeDefinition& type) {
            if (m_contentRestrictions.count(&type) == 0) CompleteSimpleType(type);
        },
        [this](CSimpleTypeDefinition& type, CSimpleTypeDefinition& need) {
            FaultAt(type.place, "The type " + NameOf(type) + " is made from itself.",
                    type.variety == CSimpleTypeDefinition::Variety::Union ? "src-simple-type.4"
                                                                          : "st-props-correct.2");
            if (type.baseTypeDefinition == &need) {
                type.baseTypeDefinition = &m_store.BuiltIn(BuiltInType::AnySimpleType);
                m_broken.insert(&type);
            }
            if (type.itemTypeDefinition == &need)
                type.itemTypeDefinition = &m_store.BuiltIn(BuiltInType::String);
            auto& members = type.memberTypeDefinitions;
            members.erase(std::remove(members.begin(), members.end(), &need), members.end());
        },
        [this](CSimpleTypeDefinition& type) { FaultAt(type.place, TooLong(type), ""); });

    CutCircularGroups();

    InOrderOfDependence<CAttributeGroupDefinition>(
        m_store.Pool<CAttributeGroupDefinition>(),
        [](CAttributeGroupDefinition& group) {
            std::vector<CAttributeGroupDefinition*> needs;
            for (const CAttributeGroupDefinition* need : group.attributeGroups)
                needs.push_back(Mutable(need));
            return needs;
        },
        [this](CAttributeGroupDefinition& group) { CompleteAttributeGroup(group); },
        [this](CAttributeGroupDefinition& group, CAttributeGroupDefinition& need) {
            FaultAt(group.place, "The attribute group " + NameOf(group) + " refers to itself.",
                    "src-attribute_group.3");
            auto& groups = group.attributeGroups;
            groups.erase(std::remove(groups.begin(), groups.end(), &need), groups.end());
        },
        [this](CAttributeGroupDefinition& group) { FaultAt(group.place, TooLong(group), ""); });

    InOrderOfDependence<CComplexTypeDefinition>(
        m_store.Pool<CComplexTypeDefinition>(),
        [](CComplexTypeDefinition& type) {
            std::vector<CComplexTypeDefinition*> needs;
            if (type.baseTypeDefinition != nullptr && !type.baseTypeDefinition->IsSimple())
                needs.push_back(Mutable(type.baseTypeDefinition->AsComplex()));
            return needs;
        },
        [this](CComplexTypeDefinition& type) { CompleteComplexType(type); },
        [this](CComplexTypeDefinition& type, CComplexTypeDefinition&) {
            FaultAt(type.place, "The type " + NameOf(type) + " is derived from itself.",
                    "ct-props-correct.3");
            type.baseTypeDefinition = &m_store.AnyType();
            m_broken.insert(&type);
        },
        [this](CComplexTypeDefinition& type) {
            FaultAt(type.place, TooLong(type), "");
            type.baseTypeDefinition = &m_store.AnyType();
            m_broken.insert(&type);
        });

    CompleteElementTypes();
    CompleteSubstitutionGroups();
    CompleteKeyrefs();
    CheckRedefinedGroups();

    for (const CTypeDefinition& type : m_store.Pool<CSimpleTypeDefinition>()) {
        if (type.place.document != nullptr) m_store.allTypes.push_back(&type);
    }
    for (const CTypeDefinition& type : m_store.Pool<CComplexTypeDefinition>()) {
        if (type.place.document != nullptr) m_store.allTypes.push_back(&type);
    }
    std::sort(m_store.allTypes.begin(), m_store.allTypes.end(),
              [](const CTypeDefinition* a, const CTypeDefinition* b) { return a->order < b->order; });
}

// --- simple types ------------------------------------------------------------------------------------------

void CComponentBuilder::CompleteSimpleType(CSimpleTypeDefinition& type) {
    if (!type.isConstructed && !type.isBuiltIn) {
        const CSimpleTypeDefinition* const base = type.baseTypeDefinition->AsSimple();
        if (base->variety == CSimpleTypeDefinition::Variety::Absent) {
            if (m_broken.count(&type) == 0) {
                FaultAt(type.place, "A type cannot be a restriction of [anySimpleType].",
                        "cos-st-restricts.1.1");
            }
            type.baseTypeDefinition = &m_store.BuiltIn(BuiltInType::String);
            type.ownFacets.clear();
            return CompleteSimpleType(type);
        }
        type.variety = base->variety;
        type.primitiveTypeDefinition = base->primitiveTypeDefinition;
        type.itemTypeDefinition = base->itemTypeDefinition;
        type.memberTypeDefinitions = base->memberTypeDefinitions;
        type.builtInType = base->builtInType;
    }
    CompileChecker(type);
}

void CComponentBuilder::CompileChecker(CSimpleTypeDefinition& type) {
    class Reporter : public IFacetReport {
    public:
        explicit Reporter(CComponentBuilder& builder) : m_builder(builder) {}
        void Report(const CSourcePlace& place, std::string message, const char* constraint) override {
            m_builder.FaultAt(place, std::move(message), constraint);
        }

    private:
        CComponentBuilder& m_builder;
    };
    Reporter report(*this);
    type.checker = CompileSimpleType(type, report);
}

// --- model groups ------------------------------------------------------------------------------------------

/// Finds references of groups to themselves, and takes them out.
void CComponentBuilder::CutCircularGroups() {
    struct Reference {
        std::vector<const CParticle*>* holder;
        const CParticle* particle;
    };
    const auto collect = [](CModelGroupDefinition& definition) {
        std::vector<Reference> found;
        std::vector<CModelGroup*> open{Mutable(definition.modelGroup)};
        while (!open.empty()) {
            CModelGroup& group = *open.back();
            open.pop_back();
            for (const CParticle* particle : group.particles) {
                const CModelGroup* const inner = particle->AsGroup();
                if (inner == nullptr) continue;
                if (particle->modelGroupDefinition != nullptr) {
                    found.push_back({&group.particles, particle});
                } else {
                    open.push_back(Mutable(inner));
                }
            }
        }
        return found;
    };
    const auto cut = [&](CModelGroupDefinition& definition, const CModelGroupDefinition* need,
                         std::string message, const char* constraint) {
        for (const Reference& reference : collect(definition)) {
            if (need != nullptr && reference.particle->modelGroupDefinition != need) continue;
            FaultAt(reference.particle->place, message, constraint);
            auto& holder = *reference.holder;
            holder.erase(std::remove(holder.begin(), holder.end(), reference.particle), holder.end());
        }
    };
    InOrderOfDependence<CModelGroupDefinition>(
        m_store.Pool<CModelGroupDefinition>(),
        [&](CModelGroupDefinition& definition) {
            std::vector<CModelGroupDefinition*> needs;
            for (const Reference& reference : collect(definition))
                needs.push_back(Mutable(reference.particle->modelGroupDefinition));
            return needs;
        },
        [](CModelGroupDefinition&) {},
        [&](CModelGroupDefinition& definition, CModelGroupDefinition& need) {
            cut(definition, &need, "The model group " + NameOf(definition) + " refers to itself.",
                "mg-props-correct.2");
        },
        [&](CModelGroupDefinition& definition) { cut(definition, nullptr, TooLong(definition), ""); });
}

/// A group that is redefined without a reference to itself must be a restriction of what it was.
void CComponentBuilder::CheckRedefinedGroups() {
    for (const auto& [definition, original] : m_redefinedGroups) {
        CParticle derived;
        CParticle base;
        derived.term = definition->modelGroup;
        base.term = original->modelGroup;
        const char* constraint = nullptr;
        if (!IsParticleRestriction(&derived, &base, &constraint)) {
            FaultAt(
                definition->place,
                "The model group " + NameOf(*definition) + " is no restriction of the one that it redefines.",
                "src-redefine.6.2.2");
        }
    }
    for (const auto& [group, original] : m_redefinedAttributeGroups) {
        const auto report = [this, redefined = group](const CSourcePlace&, const std::string& why,
                                                      const char*) {
            FaultAt(redefined->place,
                    "The attribute group " + NameOf(*redefined) +
                        " is no restriction of the one that it redefines: " + why + ".",
                    "src-redefine.7.2.2");
        };
        CheckAttributeRestriction(group->attributeUses, group->attributeWildcard, original->attributeUses,
                                  original->attributeWildcard, false, report);
    }
}

// --- declarations ------------------------------------------------------------------------------------------

/// Elements without a type of their own have that of the head of their substitution group.
void CComponentBuilder::CompleteElementTypes() {
    for (const auto& [element, at] : m_typeOfHead) {
        std::vector<CElementDeclaration*> path;
        const CElementDeclaration* head = element;
        while (head != nullptr && head->typeDefinition == nullptr && path.size() <= m_typeOfHead.size()) {
            path.push_back(Mutable(head));
            head = head->substitutionGroupAffiliation;
        }
        const CTypeDefinition* const type =
            head == nullptr || head->typeDefinition == nullptr ? &m_store.AnyType() : head->typeDefinition;
        for (CElementDeclaration* one : path)
            one->typeDefinition = type;
    }
}

void CComponentBuilder::CompleteSubstitutionGroups() {
    // Circles first; the marks tell which walk has seen an element.
    std::unordered_map<const CElementDeclaration*, std::size_t> seen;
    std::size_t walk = 0;
    for (CElementDeclaration& element : m_store.Pool<CElementDeclaration>()) {
        ++walk;
        for (CElementDeclaration* at = &element; at->substitutionGroupAffiliation != nullptr;
             at = Mutable(at->substitutionGroupAffiliation)) {
            const auto [mark, isNew] = seen.emplace(at, walk);
            if (isNew) continue;
            if (mark->second != walk) break;
            FaultAt(at->place, "The element " + NameOf(*at) + " is in its own substitution group.",
                    "e-props-correct.6");
            at->substitutionGroupAffiliation = nullptr;
            break;
        }
    }
    for (CElementDeclaration& element : m_store.Pool<CElementDeclaration>()) {
        if (element.substitutionGroupAffiliation != nullptr)
            Mutable(element.substitutionGroupAffiliation)->substitutionGroupMembers.push_back(&element);
    }
}

void CComponentBuilder::CompleteKeyrefs() {
    for (const auto& [keyref, at] : m_keyrefs) {
        auto* const key =
            Resolve(m_store.identityConstraints, at, at.node->Get("refer"), "identity constraint");
        if (key == nullptr) continue;
        keyref->referencedKey = key;
        key->isReferenced = true;
        if (key->category == CIdentityConstraintDefinition::Category::Keyref) {
            Fault(at, "A keyref cannot refer to another keyref.", "c-props-correct.1");
            keyref->referencedKey = nullptr;
        } else if (key->fields.size() != keyref->fields.size()) {
            Fault(at,
                  "The keyref has " + std::to_string(keyref->fields.size()) +
                      " fields, the key that it refers to " + std::to_string(key->fields.size()) + ".",
                  "c-props-correct.2");
            keyref->referencedKey = nullptr;
        }
    }
}

}  // namespace KvXmlLib16::internal
