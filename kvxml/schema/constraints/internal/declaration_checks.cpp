// Elements, attributes and their uses, simple types: what their properties demand of each other.
#include "kvxml/schema/constraints/internal/reporter.h"
#include "kvxml/schema/constraints/internal/schema_constraints.h"
#include "kvxml/schema/datatypes/internal/simple_type_checker.h"

namespace KvXmlLib16::internal {

namespace {

/// Whether a default or fixed value is one of the type; the sentence why not.
bool IsValid(const CValueConstraint& constraint, const CSimpleTypeDefinition& type, std::string& error) {
    const CVectorScope scope(constraint.scope);
    return type.checker == nullptr || type.checker->Check(constraint.text, &scope, nullptr, &error, nullptr);
}

std::string KeyOf(const CValueConstraint& constraint, const CSimpleTypeDefinition& type) {
    const CVectorScope scope(constraint.scope);
    CCheckedValue value;
    if (type.checker != nullptr) type.checker->Check(constraint.text, &scope, &value, nullptr, nullptr);
    return value.key;
}

/// NOTATION may be used only by way of types that enumerate notations (Part 2, 3.2.19).
bool LacksEnumeration(const CTypeDefinition& type) {
    const CSimpleTypeDefinition* const simple = type.AsSimple();
    if (simple == nullptr || simple->variety != CSimpleTypeDefinition::Variety::Atomic ||
        simple->builtInType != BuiltInType::Notation)
        return false;
    for (const CTypeDefinition* at = simple; at != nullptr && at->IsSimple(); at = at->baseTypeDefinition) {
        for (const CFacet* facet : at->AsSimple()->ownFacets) {
            if (facet->facet == FacetKind::Enumeration) return false;
        }
    }
    return true;
}

class Checks {
public:
    Checks(CSchemaStore& store, CFaultList& faults) : m_store(store), m_faults(faults) {}

    void Run() {
        for (const CElementDeclaration& element : m_store.Pool<CElementDeclaration>())
            CheckElement(element);
        for (const CAttributeDeclaration& attribute : m_store.Pool<CAttributeDeclaration>())
            CheckAttribute(attribute);
        for (const CAttributeUse& use : m_store.Pool<CAttributeUse>())
            CheckUse(use);
        for (const CAttributeGroupDefinition& group : m_store.Pool<CAttributeGroupDefinition>())
            CheckIds(group.attributeUses, group, "ag-props-correct.3");
        for (const CSimpleTypeDefinition& type : m_store.Pool<CSimpleTypeDefinition>()) {
            if (!type.isBuiltIn) CheckSimpleType(type);
        }
    }

    void CheckIds(const std::vector<const CAttributeUse*>& uses, const CComponent& owner,
                  const char* constraint) {
        const CAttributeUse* first = nullptr;
        for (const CAttributeUse* use : uses) {
            if (!IsId(*use->attributeDeclaration->typeDefinition)) continue;
            if (first != nullptr) {
                Report(m_faults, owner.place,
                       "The attributes " + ShownName(first->attributeDeclaration->name) + " and " +
                           ShownName(use->attributeDeclaration->name) + " are both of the type ID.",
                       constraint);
                return;
            }
            first = use;
        }
    }

private:
    void Add(const CComponent& component, std::string message, const char* constraint) {
        Report(m_faults, component.place, std::move(message), constraint);
    }

    void CheckElement(const CElementDeclaration& element) {
        const std::string name = "The element " + ShownName(element);
        if (LacksEnumeration(*element.typeDefinition))
            Add(element, name + " has the type NOTATION without an enumeration.",
                "enumeration-required-notation");
        if (element.valueConstraint.kind != CValueConstraint::None) CheckElementValue(element, name);
        const CElementDeclaration* const head = element.substitutionGroupAffiliation;
        if (head != nullptr && !IsDerivationOk(*element.typeDefinition, *head->typeDefinition,
                                               head->substitutionGroupExclusions)) {
            Add(element,
                name + " cannot stand for " + ShownName(*head) +
                    ": its type is not derived from that of the head, or "
                    "by a method that the head excludes.",
                "e-props-correct.4");
        }
    }

    /// Element Default Valid (3.3.6).
    void CheckElementValue(const CElementDeclaration& element, const std::string& name) {
        const CSimpleTypeDefinition* simple = element.typeDefinition->AsSimple();
        if (const CComplexTypeDefinition* complex = element.typeDefinition->AsComplex()) {
            using Content = CComplexTypeDefinition::ContentKind;
            if (complex->contentKind == Content::Mixed) {
                if (!IsEmptiable(complex->particle))
                    Add(element, name + " has a value constraint, but its content cannot be empty.",
                        "cos-valid-default.2.2.2");
                return;
            }
            if (complex->contentKind != Content::Simple) {
                Add(element, name + " has a value constraint, but neither simple nor mixed content.",
                    "cos-valid-default.2.1");
                return;
            }
            simple = complex->simpleContent;
        }
        std::string error;
        if (!IsValid(element.valueConstraint, *simple, error))
            Add(element, name + " has a default or fixed value that is not valid: " + error,
                "e-props-correct.2");
        if (IsId(*simple))
            Add(element, name + " is of the type ID and may have no value constraint.", "e-props-correct.5");
    }

    void CheckAttribute(const CAttributeDeclaration& attribute) {
        const std::string name = "The attribute " + ShownName(attribute);
        if (LacksEnumeration(*attribute.typeDefinition))
            Add(attribute, name + " has the type NOTATION without an enumeration.",
                "enumeration-required-notation");
        CheckAttributeValue(attribute, *attribute.typeDefinition, attribute.valueConstraint, name);
    }

    void CheckAttributeValue(const CComponent& component, const CSimpleTypeDefinition& type,
                             const CValueConstraint& constraint, const std::string& name) {
        if (constraint.kind == CValueConstraint::None) return;
        std::string error;
        if (!IsValid(constraint, type, error))
            Add(component, name + " has a default or fixed value that is not valid: " + error,
                "a-props-correct.2");
        if (IsId(type))
            Add(component, name + " is of the type ID and may have no value constraint.",
                "a-props-correct.3");
    }

    void CheckUse(const CAttributeUse& use) {
        const CAttributeDeclaration& attribute = *use.attributeDeclaration;
        const std::string name = "The attribute " + ShownName(attribute.name);
        CheckAttributeValue(use, *attribute.typeDefinition, use.valueConstraint, name);
        if (attribute.valueConstraint.kind != CValueConstraint::Fixed ||
            use.valueConstraint.kind == CValueConstraint::None)
            return;
        if (use.valueConstraint.kind != CValueConstraint::Fixed ||
            KeyOf(use.valueConstraint, *attribute.typeDefinition) !=
                KeyOf(attribute.valueConstraint, *attribute.typeDefinition)) {
            Add(use, name + " has another value constraint than the fixed value of its declaration.",
                "au-props-correct.2");
        }
    }

    void CheckSimpleType(const CSimpleTypeDefinition& type) {
        const std::string name = "The type " + ShownName(type);
        if (!type.isConstructed && type.baseTypeDefinition != nullptr &&
            (type.baseTypeDefinition->final & Derivation_Restriction) != 0)
            Add(type, name + " restricts a type that is final for restrictions.", "st-props-correct.3");
        if (type.isConstructed && type.itemTypeDefinition != nullptr &&
            (type.itemTypeDefinition->final & Derivation_List) != 0)
            Add(type, name + " is a list of a type that is final for lists.", "cos-st-restricts.2.3.1.1");
        if (type.isConstructed) {
            for (const CSimpleTypeDefinition* member : type.memberTypeDefinitions) {
                if ((member->final & Derivation_Union) != 0)
                    Add(type, name + " is a union of a type that is final for unions.",
                        "cos-st-restricts.3.3.1.1");
            }
        }
        if (type.primitiveTypeDefinition != nullptr &&
            type.primitiveTypeDefinition->builtInType == BuiltInType::Notation)
            CheckNotations(type);
    }

    /// Values of NOTATION are names of declared notations.
    void CheckNotations(const CSimpleTypeDefinition& type) {
        for (const CFacet* facet : type.ownFacets) {
            if (facet->facet != FacetKind::Enumeration) continue;
            std::string_view text = facet->value;
            const std::size_t first = text.find_first_not_of(" \t\r\n");
            if (first == std::string_view::npos) continue;
            text = text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
            const std::size_t colon = text.find(':');
            CExpandedName name;
            name.localName = colon == std::string_view::npos ? text : text.substr(colon + 1);
            CVectorScope(facet->scope)
                .Resolve(colon == std::string_view::npos ? std::string_view() : text.substr(0, colon),
                         name.namespaceUri);
            if (m_store.notations.Find(name) == nullptr)
                Add(*facet, "There is no notation [" + std::string(text) + "].",
                    "enumeration-valid-restriction");
        }
    }

    CSchemaStore& m_store;
    CFaultList& m_faults;
};

}  // namespace

void CheckDeclarations(CSchemaStore& store, CFaultList& faults) {
    Checks checks(store, faults);
    checks.Run();
    for (const CComplexTypeDefinition& type : store.Pool<CComplexTypeDefinition>())
        checks.CheckIds(type.attributeUses, type, "ct-props-correct.5");
}

}  // namespace KvXmlLib16::internal
