/// Element and attribute declarations, attribute uses and groups, notations (XML Schema Part
/// 1, 3.2, 3.3, 3.5, 3.6, 3.12).
#pragma once

#include <string_view>
#include <vector>

#include "kvxml/schema/model/type_definition.h"

namespace KvXmlLib16 {

struct CIdentityConstraintDefinition;

/// An element declaration (3.3).
struct CElementDeclaration : CComponent {
    CElementDeclaration() noexcept : CComponent(ComponentKind::ElementDeclaration) {}

    CExpandedName name;
    const CTypeDefinition* typeDefinition = nullptr;
    /// {scope}: null for global declarations, else the complex type, or the model group definition while no
    /// type has taken it over.
    const CComponent* scope = nullptr;
    bool isGlobal = false;
    CValueConstraint valueConstraint;
    bool isNillable = false;
    bool isAbstract = false;
    std::vector<const CIdentityConstraintDefinition*> identityConstraints;
    /// Head of the substitution group that it belongs to; null: none.
    const CElementDeclaration* substitutionGroupAffiliation = nullptr;
    /// Global elements whose affiliation this one is, in document order; theirs are not among them.
    std::vector<const CElementDeclaration*> substitutionGroupMembers;
    DerivationSet substitutionGroupExclusions = Derivation_None;  ///< `final`
    DerivationSet disallowedSubstitutions = Derivation_None;      ///< `block`
};

/// Substitution Group OK (3.3.6): a document may have `member` where `head` is asked for. True for one and
/// the same. Whether the member is abstract does not count.
KVXML_SCHEMA_EXPORT bool IsSubstitutable(const CElementDeclaration& member,
                                         const CElementDeclaration& head) noexcept;

/// An attribute declaration (3.2).
struct CAttributeDeclaration : CComponent {
    CAttributeDeclaration() noexcept : CComponent(ComponentKind::AttributeDeclaration) {}

    CExpandedName name;
    const CSimpleTypeDefinition* typeDefinition = nullptr;
    const CComponent* scope = nullptr;  ///< null for global declarations, else type or attribute group
    bool isGlobal = false;
    CValueConstraint valueConstraint;
};

/// An attribute use (3.5).
struct CAttributeUse : CComponent {
    CAttributeUse() noexcept : CComponent(ComponentKind::AttributeUse) {}

    const CAttributeDeclaration* attributeDeclaration = nullptr;
    bool isRequired = false;
    bool isProhibited = false;         ///< only in the own uses of a type
    CValueConstraint valueConstraint;  ///< of the use; the declaration's own stands beside it
    /// The attribute group in whose definition it stands; null: it stands in a type.
    const CAttributeGroupDefinition* attributeGroup = nullptr;

    /// The constraint in force: that of the use, else that of the declaration.
    const CValueConstraint& EffectiveValueConstraint() const noexcept {
        return valueConstraint.kind != CValueConstraint::None ? valueConstraint
                                                              : attributeDeclaration->valueConstraint;
    }
};

/// An attribute group definition (3.6).
struct CAttributeGroupDefinition : CComponent {
    CAttributeGroupDefinition() noexcept : CComponent(ComponentKind::AttributeGroupDefinition) {}

    CExpandedName name;
    std::vector<const CAttributeUse*> attributeUses;                ///< those of referenced groups included
    const CWildcard* attributeWildcard = nullptr;                   ///< null: none; complete (intersected)
    const CWildcard* ownAttributeWildcard = nullptr;                ///< of its own `anyAttribute`; null: none
    std::vector<const CAttributeGroupDefinition*> attributeGroups;  ///< referenced directly
};

/// A notation declaration (3.12).
struct CNotationDeclaration : CComponent {
    CNotationDeclaration() noexcept : CComponent(ComponentKind::NotationDeclaration) {}

    CExpandedName name;
    std::string_view systemIdentifier;  ///< may be empty
    std::string_view publicIdentifier;  ///< may be empty
};

/// An identity-constraint definition (3.11).
struct CIdentityConstraintDefinition : CComponent {
    enum class Category : std::uint8_t { Key, Keyref, Unique };

    /// One step of a path: a child or attribute of a name, of any name of a namespace, or of any name.
    struct Step {
        enum class Axis : std::uint8_t { Self, Child, Attribute };
        Axis axis = Axis::Child;
        bool anyNamespace = false;  ///< `*`
        bool anyName = false;       ///< `*` or `prefix:*`
        CExpandedName name;
    };
    /// One of the alternatives between `|`.
    struct Path {
        bool fromDescendants = false;  ///< begins with `.//`
        std::vector<Step> steps;       ///< `.` alone has none
    };
    /// A selector or field in the restricted XPath of 3.11.6.
    struct XPath {
        std::string_view text;
        CSourcePlace place;
        std::vector<Path> paths;
    };

    CIdentityConstraintDefinition() noexcept : CComponent(ComponentKind::IdentityConstraintDefinition) {}

    CExpandedName name;
    Category category = Category::Key;
    XPath selector;
    std::vector<XPath> fields;
    const CIdentityConstraintDefinition* referencedKey = nullptr;  ///< of a keyref; else null
    bool isReferenced = false;                                     ///< a keyref refers to it
};

}  // namespace KvXmlLib16
