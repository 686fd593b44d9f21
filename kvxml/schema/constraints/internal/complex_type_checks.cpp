// Derivation valid of complex types (XML Schema Part 1, 3.4.6).
#include <algorithm>
#include <unordered_map>

#include "kvxml/schema/constraints/internal/reporter.h"
#include "kvxml/schema/constraints/internal/schema_constraints.h"
#include "kvxml/schema/datatypes/internal/simple_type_checker.h"

namespace KvXmlLib16::internal {

namespace {

using Content = CComplexTypeDefinition::ContentKind;

std::string KeyOf(const CAttributeUse& use) {
    const CValueConstraint& constraint = use.EffectiveValueConstraint();
    const CVectorScope scope(constraint.scope);
    CCheckedValue value;
    const auto& checker = use.attributeDeclaration->typeDefinition->checker;
    if (checker != nullptr) checker->Check(constraint.text, &scope, &value, nullptr, nullptr);
    return value.key;
}

bool IsFixed(const CAttributeUse& use) noexcept {
    return use.EffectiveValueConstraint().kind == CValueConstraint::Fixed;
}

class Checks {
public:
    Checks(CSchemaStore& store, CFaultList& faults) : m_store(store), m_faults(faults) {}

    void Check(const CComplexTypeDefinition& type) {
        if (type.baseTypeDefinition == nullptr) return;
        m_type = &type;
        const CComplexTypeDefinition* const base = type.baseTypeDefinition->AsComplex();
        const bool isExtension = type.derivationMethod == Derivation_Extension;
        if ((type.baseTypeDefinition->final & type.derivationMethod) != 0) {
            Add(std::string("the base type is final for ") + (isExtension ? "extensions" : "restrictions"),
                base == nullptr ? "cos-ct-extends.2.2"
                : isExtension   ? "cos-ct-extends.1.1"
                                : "derivation-ok-restriction.1");
        }
        if (base == nullptr) return;
        if (isExtension) {
            CheckExtension(*base);
        } else {
            CheckRestriction(*base);
        }
    }

private:
    void Add(const std::string& why, const char* constraint) {
        Report(m_faults, m_type->place,
               "The type " + ShownName(*m_type) + " is not derived as it must be: " + why + ".", constraint);
    }

    void CheckExtension(const CComplexTypeDefinition& base) {
        if (base.contentKind == Content::Empty) return;
        if (m_type->contentKind == base.contentKind) return;
        if (base.contentKind == Content::Simple) {
            Add("it extends simple content by elements", "cos-ct-extends.1.4.1");
        } else {
            Add("it and its base must both have mixed content, or both not", "cos-ct-extends.1.4.2.2.2.2.1");
        }
    }

    void CheckRestriction(const CComplexTypeDefinition& base) {
        const bool isFromAnyType = base.baseTypeDefinition == nullptr;
        CheckAttributeRestriction(
            m_type->attributeUses, m_type->attributeWildcard, base.attributeUses, base.attributeWildcard,
            isFromAnyType, [this](const CSourcePlace& place, std::string why, const char* constraint) {
                if (place.document == nullptr) return Add(why, constraint);
                Report(m_faults, place,
                       "The type " + ShownName(*m_type) + " is not derived as it must be: " + why + ".",
                       constraint);
            });
        if (!isFromAnyType) CheckContent(base);
    }

    void CheckContent(const CComplexTypeDefinition& base) {
        switch (m_type->contentKind) {
            case Content::Simple:
                return CheckSimpleContent(base);
            case Content::Empty:
                if (base.contentKind == Content::Simple ||
                    (base.contentKind != Content::Empty && !IsEmptiable(base.particle)))
                    Add("it is empty, and the content of its base cannot be",
                        "derivation-ok-restriction.5.3.2");
                return;
            default:
                break;
        }
        if (base.contentKind == Content::Empty || base.contentKind == Content::Simple) {
            return Add("it has elements, and its base has none", "derivation-ok-restriction.5.4.2");
        }
        if (m_type->contentKind == Content::Mixed && base.contentKind != Content::Mixed)
            return Add("it is mixed, and its base is not", "derivation-ok-restriction.5.4.1.2");
        const char* constraint = nullptr;
        if (!IsParticleRestriction(m_type->particle, base.particle, &constraint)) {
            Add("its content is no restriction of that of the base",
                constraint != nullptr ? constraint : "derivation-ok-restriction.5.4.2");
        }
    }

    void CheckSimpleContent(const CComplexTypeDefinition& base) {
        if (base.contentKind == Content::Simple) {
            if (!IsDerivationOk(*m_type->simpleContent, *base.simpleContent, Derivation_None))
                Add("its simple type is not derived from that of the base",
                    "derivation-ok-restriction.5.2.2.1");
        } else if (base.contentKind != Content::Mixed || !IsEmptiable(base.particle)) {
            Add("it has simple content, and its base is neither simple nor mixed and emptiable",
                "derivation-ok-restriction.5.2.2.2");
        }
    }

    CSchemaStore& m_store;
    CFaultList& m_faults;
    const CComplexTypeDefinition* m_type = nullptr;
};

}  // namespace

void CheckAttributeRestriction(const std::vector<const CAttributeUse*>& uses, const CWildcard* wildcard,
                               const std::vector<const CAttributeUse*>& baseUses,
                               const CWildcard* baseWildcard, bool isFromAnyType,
                               const AttributeReport& report) {
    std::unordered_map<CExpandedName, const CAttributeUse*, CExpandedNameHash> byName;
    for (const CAttributeUse* use : baseUses)
        byName.emplace(use->attributeDeclaration->name, use);
    std::size_t kept = 0;
    for (const CAttributeUse* use : uses) {
        const CAttributeDeclaration& attribute = *use->attributeDeclaration;
        const std::string name = "the attribute " + ShownName(attribute.name);
        const auto found = byName.find(attribute.name);
        if (found == byName.end()) {
            if (baseWildcard == nullptr || !baseWildcard->Admits(attribute.name.namespaceUri))
                report(use->place, name + " is not in the base, nor admitted by its wildcard",
                       "derivation-ok-restriction.2.2");
            continue;
        }
        ++kept;
        const CAttributeUse& base = *found->second;
        if (&base == use) continue;
        if (base.isRequired && !use->isRequired)
            report(use->place, name + " is required in the base", "derivation-ok-restriction.2.1.1");
        if (!IsDerivationOk(*attribute.typeDefinition, *base.attributeDeclaration->typeDefinition,
                            Derivation_None))
            report(use->place, "the type of " + name + " is not derived from that in the base",
                   "derivation-ok-restriction.2.1.2");
        if (IsFixed(base) && (!IsFixed(*use) || KeyOf(*use) != KeyOf(base)))
            report(use->place, name + " has another fixed value in the base",
                   "derivation-ok-restriction.2.1.3");
    }
    if (kept < baseUses.size()) {
        std::unordered_map<CExpandedName, const CAttributeUse*, CExpandedNameHash> own;
        for (const CAttributeUse* use : uses)
            own.emplace(use->attributeDeclaration->name, use);
        for (const CAttributeUse* base : baseUses) {
            if (base->isRequired && own.count(base->attributeDeclaration->name) == 0)
                report({},
                       "the attribute " + ShownName(base->attributeDeclaration->name) +
                           " of the base is required",
                       "derivation-ok-restriction.3");
        }
    }
    if (wildcard == nullptr) return;
    if (baseWildcard == nullptr) {
        report({}, "it has an attribute wildcard, and its base has none", "derivation-ok-restriction.4.1");
    } else if (!IsSubset(*wildcard, *baseWildcard)) {
        report({}, "its attribute wildcard admits namespaces that the base's does not",
               "derivation-ok-restriction.4.2");
    } else if (!isFromAnyType && wildcard->processContents < baseWildcard->processContents) {
        report({}, "its attribute wildcard is more lenient than the base's", "derivation-ok-restriction.4.3");
    }
}

void CheckComplexTypes(CSchemaStore& store, CFaultList& faults) {
    Checks checks(store, faults);
    for (const CComplexTypeDefinition& type : store.Pool<CComplexTypeDefinition>())
        checks.Check(type);
}

}  // namespace KvXmlLib16::internal
