/// What elements of schema documents may have and hold, by the context that they stand in (XML Schema Part 1,
/// Appendix A; Part 2, Appendix A).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/schema/reader/internal/attribute_form.h"
#include "kvxml/schema/reader/internal/schema_node.h"

namespace KvXmlLib16::internal {

/// An element of a schema document in a context. Where context makes no difference: as SchemaTag.
enum class Construct : std::uint8_t {
    Schema,
    Include,
    Import,
    Redefine,
    Annotation,
    Appinfo,
    Documentation,
    GlobalSimpleType,
    LocalSimpleType,
    SimpleRestriction,
    List,
    Union,
    Facet,
    FacetThatRepeats,  ///< enumeration, pattern
    GlobalComplexType,
    LocalComplexType,
    SimpleContent,
    SimpleContentRestriction,
    SimpleContentExtension,
    ComplexContent,
    ComplexDerivation,  ///< restriction and extension of complexContent
    GlobalElement,
    LocalElement,
    ElementOfAll,
    GlobalAttribute,
    LocalAttribute,
    AttributeGroupDefinition,
    AttributeGroupReference,
    AnyAttribute,
    GroupDefinition,
    GroupReference,
    AllOfDefinition,  ///< directly in a group definition
    All,
    GroupOfDefinition,  ///< choice and sequence directly in a group definition
    Group,              ///< choice and sequence elsewhere
    Any,
    Notation,
    Key,  ///< key and unique
    Keyref,
    XPath,  ///< selector and field
    Count,
};

struct CAttributeRule {
    std::string_view name;
    AttributeForm form;
    bool isRequired = false;
};

struct CChildRule {
    SchemaTag tag;
    Construct construct;
    bool isLast = false;  ///< nothing may follow it
};

/// A view of a constant table.
template <class T>
struct TableView {
    const T* first = nullptr;
    std::size_t count = 0;

    constexpr TableView() = default;
    template <std::size_t N>
    constexpr TableView(const T (&table)[N]) : first(table), count(N) {}  // NOLINT: as good as the table
    constexpr const T* begin() const noexcept { return first; }
    constexpr const T* end() const noexcept { return first + count; }
};

/// A part of a content model: one of the children, so many times.
struct CContentPart {
    TableView<CChildRule> children;
    bool isRequired = false;
    bool repeats = false;
};

/// Attributes (all without namespace) and content, part after part.
struct CConstructRule {
    TableView<CAttributeRule> attributes;
    TableView<CContentPart> content;
};

const CConstructRule& RuleOf(Construct construct) noexcept;

/// The content as regular expression, "(annotation?, (simpleType | complexType)?)".
std::string ContentText(const CConstructRule& rule);

/// Elements and attributes that XML Schema 1.1 added.
bool IsElementOf11(std::string_view name) noexcept;
bool IsAttributeOf11(SchemaTag tag, std::string_view name) noexcept;

}  // namespace KvXmlLib16::internal
