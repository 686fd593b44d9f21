/// Type definitions (XML Schema Part 1, 3.4 and 3.14).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/schema/model/component.h"

namespace KvXmlLib16 {

struct CAttributeUse;
struct CAttributeGroupDefinition;
struct CComplexTypeDefinition;
struct CElementDeclaration;
struct CParticle;
struct CSimpleTypeDefinition;
struct CWildcard;

namespace internal {
class CSimpleTypeChecker;
}

/// What simple and complex type definitions have in common.
struct CTypeDefinition : CComponent {
    using CComponent::CComponent;

    CExpandedName name;  ///< the local name is empty for an anonymous type
    /// Null only for anyType.
    const CTypeDefinition* baseTypeDefinition = nullptr;
    DerivationSet final = Derivation_None;
    /// The declaration or type that an anonymous type stands in; null for global types.
    const CComponent* context = nullptr;

    bool IsSimple() const noexcept { return kind == ComponentKind::SimpleTypeDefinition; }
    bool IsAnonymous() const noexcept { return name.localName.empty(); }
    /// Null for the other kind.
    inline const CSimpleTypeDefinition* AsSimple() const noexcept;
    inline const CComplexTypeDefinition* AsComplex() const noexcept;
};

/// The built-in simple types of XML Schema Part 2. The primitive ones come first.
enum class BuiltInType : std::uint8_t {
    String,
    Boolean,
    Decimal,
    Float,
    Double,
    Duration,
    DateTime,
    Time,
    Date,
    GYearMonth,
    GYear,
    GMonthDay,
    GDay,
    GMonth,
    HexBinary,
    Base64Binary,
    AnyURI,
    QName,
    Notation,
    // derived from string
    NormalizedString,
    Token,
    Language,
    NMTOKEN,
    NMTOKENS,
    Name,
    NCName,
    ID,
    IDREF,
    IDREFS,
    ENTITY,
    ENTITIES,
    // derived from decimal
    Integer,
    NonPositiveInteger,
    NegativeInteger,
    Long,
    Int,
    Short,
    Byte,
    NonNegativeInteger,
    UnsignedLong,
    UnsignedInt,
    UnsignedShort,
    UnsignedByte,
    PositiveInteger,
    AnySimpleType,
};
inline constexpr std::size_t kBuiltInTypeCount = static_cast<std::size_t>(BuiltInType::AnySimpleType) + 1;

/// Constraining facets (Part 2, 4.3).
enum class FacetKind : std::uint8_t {
    Length,
    MinLength,
    MaxLength,
    Pattern,
    Enumeration,
    WhiteSpace,
    MaxInclusive,
    MaxExclusive,
    MinExclusive,
    MinInclusive,
    TotalDigits,
    FractionDigits,
};

/// One facet as it stands in a restriction.
struct CFacet : CComponent {
    CFacet() noexcept : CComponent(ComponentKind::Facet) {}

    FacetKind facet = FacetKind::Length;
    std::string_view value;  ///< as the schema has it
    bool isFixed = false;
    /// Prefixes in scope, for enumerations of QName and NOTATION; null for other facets.
    const std::vector<std::pair<std::string_view, std::string_view>>* scope = nullptr;
};

enum class WhiteSpace : std::uint8_t { Preserve, Replace, Collapse };

/// A simple type definition (Part 1, 3.14).
struct CSimpleTypeDefinition : CTypeDefinition {
    enum class Variety : std::uint8_t { Absent, Atomic, List, Union };  ///< Absent: anySimpleType

    CSimpleTypeDefinition() noexcept : CTypeDefinition(ComponentKind::SimpleTypeDefinition) {}

    Variety variety = Variety::Atomic;
    /// Atomic: the primitive type; null for others.
    const CSimpleTypeDefinition* primitiveTypeDefinition = nullptr;
    /// List: type of the items; null for others.
    const CSimpleTypeDefinition* itemTypeDefinition = nullptr;
    /// Union: the members, those of member unions not put in their place; empty for others.
    std::vector<const CSimpleTypeDefinition*> memberTypeDefinitions;
    /// Facets of this step of derivation alone, in document order: alternatives of one step's pattern are
    /// several entries, so are values of an enumeration.
    std::vector<CFacet*> ownFacets;
    /// The nearest built-in type on the way up; AnySimpleType for lists and unions that are not built in.
    BuiltInType builtInType = BuiltInType::AnySimpleType;
    /// Itself a type of XML Schema Part 2.
    bool isBuiltIn = false;
    /// True when the definition was made by `<list>` or `<union>`, not by restriction.
    bool isConstructed = false;
    /// Judges values: whitespace, lexical form, all facets of all steps. Set when the set is complete, null
    /// only while it is not, or when the facets make no sense.
    std::shared_ptr<const internal::CSimpleTypeChecker> checker;
};

/// A complex type definition (3.4).
struct CComplexTypeDefinition : CTypeDefinition {
    enum class ContentKind : std::uint8_t { Empty, Simple, ElementOnly, Mixed };

    CComplexTypeDefinition() noexcept : CTypeDefinition(ComponentKind::ComplexTypeDefinition) {}

    Derivation derivationMethod = Derivation_Restriction;  ///< extension or restriction
    bool isAbstract = false;
    DerivationSet prohibitedSubstitutions = Derivation_None;  ///< `block`
    /// All uses, those of the base and of attribute groups included, none twice; prohibited ones left out.
    std::vector<const CAttributeUse*> attributeUses;
    const CWildcard* attributeWildcard = nullptr;  ///< null: none
    ContentKind contentKind = ContentKind::Empty;
    const CSimpleTypeDefinition* simpleContent = nullptr;  ///< Simple only
    const CParticle* particle =
        nullptr;  ///< ElementOnly and Mixed only; also then null: emptiable by nothing

    // What the representation itself says, apart from the base.

    bool hasComplexContentElement = false;               ///< `<complexContent>` is written out
    const CParticle* ownParticle = nullptr;              ///< null: none
    std::vector<const CAttributeUse*> ownAttributeUses;  ///< prohibited ones included
    const CWildcard* ownAttributeWildcard = nullptr;     ///< null: none
    std::vector<const CAttributeGroupDefinition*> ownAttributeGroups;
};

inline const CSimpleTypeDefinition* CTypeDefinition::AsSimple() const noexcept {
    return IsSimple() ? static_cast<const CSimpleTypeDefinition*>(this) : nullptr;
}
inline const CComplexTypeDefinition* CTypeDefinition::AsComplex() const noexcept {
    return IsSimple() ? nullptr : static_cast<const CComplexTypeDefinition*>(this);
}

/// Names from the global component down to a declaration or type, "orders/order/@id", for messages and for
/// naming what is anonymous: the type of an element has the element's path.
KVXML_SCHEMA_EXPORT std::string GetNamePath(const CComponent& component);

/// `type` is `base` or derived from it in any number of steps. Everything is derived from anyType.
KVXML_SCHEMA_EXPORT bool IsDerivedFrom(const CTypeDefinition& type, const CTypeDefinition& base) noexcept;

}  // namespace KvXmlLib16
