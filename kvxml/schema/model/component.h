/// What all components of a schema have in common (XML Schema Part 1, 2.2 and 3).
///
/// Components are plain data, made by the reader of schema documents and owned by a CSchemaSet, which hands
/// them out as const: they never change afterwards and may be read by any number of threads for as long as
/// the set lives. Pointers between them are never dangling and, unless a comment says otherwise, not null.
/// Texts are UTF-8 and live as long as the set. An absent namespace is the empty text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/schema/model/schema_export.h"

namespace KvXmlLib16 {

/// A local name in a namespace.
struct CExpandedName {
    std::string_view namespaceUri;
    std::string_view localName;

    friend bool operator==(const CExpandedName& a, const CExpandedName& b) noexcept {
        return a.localName == b.localName && a.namespaceUri == b.namespaceUri;
    }
    friend bool operator!=(const CExpandedName& a, const CExpandedName& b) noexcept { return !(a == b); }
    friend bool operator<(const CExpandedName& a, const CExpandedName& b) noexcept {
        return a.namespaceUri != b.namespaceUri ? a.namespaceUri < b.namespaceUri : a.localName < b.localName;
    }
};

/// A schema document that a set was read from.
struct CSchemaDocument {
    std::string_view file;             ///< as it was opened
    std::string_view targetNamespace;  ///< of the schema element; with a chameleon, that of the includer
    std::uint32_t number = 0;          ///< in the order of reading, from 0
};

/// Where the representation of a component stands.
struct CSourcePlace {
    const CSchemaDocument* document = nullptr;  ///< null for built-in components
    std::uint32_t line = 0;                     ///< from 1
    std::uint32_t column = 0;                   ///< in characters, from 1
};

/// One `documentation` or `appinfo` of an annotation (3.13).
struct CAnnotationItem {
    bool isDocumentation = true;  ///< else application information
    std::string_view source;      ///< the `source` attribute; may be empty
    std::string_view language;    ///< `xml:lang` in force; may be empty
    std::string_view text;        ///< the characters of the content, tags left out
    std::string_view content;     ///< the content as XML text
};

/// An annotation (3.13).
struct CAnnotation {
    CSourcePlace place;
    std::vector<CAnnotationItem> items;
    /// Attributes of other namespances on the annotation and on the element that it annotates.
    std::vector<std::pair<CExpandedName, std::string_view>> attributes;
};

enum class ComponentKind : std::uint8_t {
    SimpleTypeDefinition,
    ComplexTypeDefinition,
    ElementDeclaration,
    AttributeDeclaration,
    AttributeUse,
    AttributeGroupDefinition,
    ModelGroupDefinition,
    ModelGroup,
    Particle,
    Wildcard,
    IdentityConstraintDefinition,
    NotationDeclaration,
    Facet,
};

struct CComponent {
    explicit CComponent(ComponentKind componentKind) noexcept : kind(componentKind) {}

    ComponentKind kind;
    /// Number in document order over all documents of the set, for stable output.
    std::uint32_t order = 0;
    CSourcePlace place;
    const CAnnotation* annotation = nullptr;  ///< null when there is none
};

/// Values of {prohibited substitutions}, {final}, {disallowed substitutions}, {substitution group
/// exclusions}.
enum Derivation : std::uint8_t {
    Derivation_None = 0,
    Derivation_Extension = 1,
    Derivation_Restriction = 2,
    Derivation_Substitution = 4,
    Derivation_List = 8,
    Derivation_Union = 16,
};
using DerivationSet = std::uint8_t;

/// {value constraint} of elements, attributes and attribute uses.
struct CValueConstraint {
    enum Kind : std::uint8_t { None, Default, Fixed };

    Kind kind = None;
    std::string_view text;  ///< as the schema has it, whitespace and all
    /// Prefixes in scope where the constraint stands, for values of QName and NOTATION: pairs of prefix and
    /// namespace.
    const std::vector<std::pair<std::string_view, std::string_view>>* scope = nullptr;
};

}  // namespace KvXmlLib16
