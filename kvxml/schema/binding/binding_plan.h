/// From components to members: which classes, members and values a schema gives. One plan, used by whatever
/// makes objects of a schema.
///
///     const std::shared_ptr<const CBindingPlan> plan = CBindingPlan::Make(schema);
///     for (const CClassPlan* one : plan->GetClasses()) std::cout << one->xmlName << '\n';
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/schema/model/fault.h"
#include "kvxml/schema/model/schema_export.h"
#include "kvxml/schema/model/schema_set.h"
#include "kvxml/types/item_type.h"

namespace KvXmlLib16 {

struct CClassPlan;

/// The values of an enumeration, each a name in the class's language.
struct CEnumPlan {
    struct Value {
        std::string_view text;
        const CAnnotation* annotation = nullptr;  ///< null: none
    };
    const CSimpleTypeDefinition* type = nullptr;
    std::vector<Value> values;  ///< in document order, each once
};

/// Facets of all steps of derivation together.
struct CFacetPlan {
    std::vector<std::string> patterns;  ///< one per step, its alternatives joined by "|"; all must match
    std::int32_t length = -1;           ///< -1: not set; so below
    std::int32_t minLength = -1;
    std::int32_t maxLength = -1;
    std::int32_t totalDigits = -1;
    std::int32_t fractionDigits = -1;
    std::string minInclusive;  ///< empty: not set; so below
    std::string maxInclusive;
    std::string minExclusive;
    std::string maxExclusive;
    std::vector<std::string> enumeration;

    bool IsEmpty() const noexcept {
        return patterns.empty() && enumeration.empty() && length == -1 && minLength == -1 &&
               maxLength == -1 && totalDigits == -1 && fractionDigits == -1 && minInclusive.empty() &&
               maxInclusive.empty() && minExclusive.empty() && maxExclusive.empty();
    }
};

/// How the values of a simple type are held.
struct CValuePlan {
    const CSimpleTypeDefinition* type = nullptr;
    ItemType item = ItemType_string;  ///< of lists, that of an item
    WhiteSpace whitespace = WhiteSpace::Collapse;
    CFacetPlan facets;
    const CEnumPlan* enumeration = nullptr;  ///< null: no enumeration of texts
    const CValuePlan* list = nullptr;        ///< type of the items; null: no list
    std::vector<const CValuePlan*> members;  ///< held as text that is valid for one of these; empty: no union
};

/// An element that may stand in for the head of its substitution group.
struct CSubstitutePlan {
    const CElementDeclaration* element = nullptr;
    const CClassPlan* classPlan = nullptr;  ///< null: of a simple type
};

/// One member of a class.
struct CMemberPlan {
    enum class Kind : std::uint8_t {
        Attribute,
        AnyAttributes,
        Text,   ///< simple content, or all text of mixed content
        Value,  ///< element of simple type, at most one
        Values,
        Object,  ///< element of complex type, at most one
        Objects,
        Groups,  ///< a repeated model group
        Any,     ///< wildcard or element of anyType, at most one
        Anys,
    };
    static constexpr std::uint32_t kUnbounded = 0xFFFFFFFF;

    Kind kind = Kind::Value;
    CExpandedName name;  ///< empty: text, wildcards, groups
    /// Attribute use, element declaration, wildcard, or particle (groups); null for text.
    const CComponent* component = nullptr;
    bool isRequired = false;
    bool isNillable = false;
    bool isAbstract = false;  ///< the head of a substitution group that is abstract itself
    bool isInChoice = false;  ///< setting it unsets others
    CValueConstraint valueConstraint;
    std::uint32_t minOccurs = 0;  ///< of repeated members
    std::uint32_t maxOccurs = kUnbounded;
    const CValuePlan* value = nullptr;
    const CClassPlan* classPlan = nullptr;  ///< of objects and groups; otherwise null
    std::vector<CSubstitutePlan> substitutes;
    std::string namespaces;            ///< of wildcards, as the schema has it
    std::string_view targetNamespace;  ///< what ##other and ##targetNamespace mean there
    /// In a class that restricts its base: the base's member whose data this one is. Null: its own.
    const CMemberPlan* inherited = nullptr;

    bool IsRepeated() const noexcept {
        return kind == Kind::Values || kind == Kind::Objects || kind == Kind::Groups || kind == Kind::Anys;
    }
    bool IsElement() const noexcept { return kind > Kind::Text; }
};

/// A node of a content model in preorder.
struct CContentPlan {
    enum class Kind : std::uint8_t { Sequence, Choice, All, Member };

    Kind kind = Kind::Sequence;
    bool isOptional = false;
    std::uint32_t size = 1;    ///< nodes of the subtree, this one included
    std::uint32_t member = 0;  ///< index into `members`
};

/// One class.
struct CClassPlan {
    enum class Kind : std::uint8_t {
        Type,    ///< of a complex type, named or not
        Root,    ///< a global element whose type has a class, `base`
        Simple,  ///< a global element of simple type: a text member and nothing else
        Group,   ///< one occurrence of a repeated model group
    };

    Kind kind = Kind::Type;
    CExpandedName xmlName;  ///< of the type; of the element for roots and types without a name
    const CComplexTypeDefinition* type = nullptr;  ///< null: Simple, Group
    /// Global element of a root; the element that a type without a name belongs to, if it does to one.
    const CElementDeclaration* element = nullptr;
    const CParticle* particle = nullptr;  ///< of a group
    const CClassPlan* owner = nullptr;    ///< of a group, or of a type without a name: where it stands
    const CClassPlan* base = nullptr;
    bool isRestriction = false;  ///< `members` and `content` are all, not those beyond the base's
    bool isAbstract = false;
    bool isMixed = false;
    bool isAnonymous = false;
    std::deque<CMemberPlan> members;
    std::vector<CContentPlan> content;  ///< empty: a sequence of all own members that are elements
    /// Classes derived from this one, in any number of steps, that a document can name.
    std::vector<const CClassPlan*> derived;
};

/// `plan` is `base` or derived from it in any number of steps.
inline bool IsDerivedFrom(const CClassPlan* plan, const CClassPlan& base) noexcept {
    while (plan != nullptr && plan != &base)
        plan = plan->base;
    return plan != nullptr;
}

/// All classes of a schema set. Immutable; shared freely between threads.
class KVXML_SCHEMA_EXPORT CBindingPlan {
public:
    /// Never null. Constructs that are carried with a loss are told by GetLosses.
    static std::shared_ptr<const CBindingPlan> Make(std::shared_ptr<const CSchemaSet> schema);
    CBindingPlan(const CBindingPlan&) = delete;
    CBindingPlan& operator=(const CBindingPlan&) = delete;
    ~CBindingPlan();

    const CSchemaSet& GetSchema() const noexcept { return *m_schema; }
    /// In document order, owners before what stands in them.
    const std::vector<const CClassPlan*>& GetClasses() const noexcept { return m_classOrder; }
    const std::deque<CEnumPlan>& GetEnumerations() const noexcept { return m_enumerations; }
    const std::deque<CValuePlan>& GetValues() const noexcept { return m_values; }
    /// What the members do not express, with the place in the schema.
    const std::vector<CFault>& GetLosses() const noexcept { return m_losses; }

private:
    friend class CPlanBuilder;

    explicit CBindingPlan(std::shared_ptr<const CSchemaSet> schema);

    std::shared_ptr<const CSchemaSet> m_schema;
    std::deque<CClassPlan> m_classes;
    std::vector<const CClassPlan*> m_classOrder;
    std::deque<CEnumPlan> m_enumerations;
    std::deque<CValuePlan> m_values;
    std::vector<CFault> m_losses;
};

}  // namespace KvXmlLib16
