#include "kvxml/schema/reader/internal/structure_tables.h"

#include <algorithm>
#include <iterator>

namespace KvXmlLib16::internal {

namespace {

using Form = AttributeForm;
using Tag = SchemaTag;

// --- parts of content
// ----------------------------------------------------------------------------------------

constexpr CChildRule kAnnotation[] = {{Tag::Annotation, Construct::Annotation}};
constexpr CChildRule kSources[] = {
    {Tag::Include, Construct::Include},
    {Tag::Import, Construct::Import},
    {Tag::Redefine, Construct::Redefine},
    {Tag::Annotation, Construct::Annotation},
};
constexpr CChildRule kGlobals[] = {
    {Tag::SimpleType, Construct::GlobalSimpleType},
    {Tag::ComplexType, Construct::GlobalComplexType},
    {Tag::Group, Construct::GroupDefinition},
    {Tag::AttributeGroup, Construct::AttributeGroupDefinition},
    {Tag::Element, Construct::GlobalElement},
    {Tag::Attribute, Construct::GlobalAttribute},
    {Tag::Notation, Construct::Notation},
    {Tag::Annotation, Construct::Annotation},
};
constexpr CChildRule kRedefinable[] = {
    {Tag::Annotation, Construct::Annotation},
    {Tag::SimpleType, Construct::GlobalSimpleType},
    {Tag::ComplexType, Construct::GlobalComplexType},
    {Tag::Group, Construct::GroupDefinition},
    {Tag::AttributeGroup, Construct::AttributeGroupDefinition},
};
constexpr CChildRule kNotes[] = {
    {Tag::Appinfo, Construct::Appinfo},
    {Tag::Documentation, Construct::Documentation},
};
constexpr CChildRule kSimpleType[] = {{Tag::SimpleType, Construct::LocalSimpleType}};
constexpr CChildRule kTypes[] = {
    {Tag::SimpleType, Construct::LocalSimpleType},
    {Tag::ComplexType, Construct::LocalComplexType},
};
constexpr CChildRule kSimpleDerivations[] = {
    {Tag::Restriction, Construct::SimpleRestriction},
    {Tag::List, Construct::List},
    {Tag::Union, Construct::Union},
};
constexpr CChildRule kFacets[] = {
    {Tag::MinExclusive, Construct::Facet}, {Tag::MinInclusive, Construct::Facet},
    {Tag::MaxExclusive, Construct::Facet}, {Tag::MaxInclusive, Construct::Facet},
    {Tag::TotalDigits, Construct::Facet},  {Tag::FractionDigits, Construct::Facet},
    {Tag::Length, Construct::Facet},       {Tag::MinLength, Construct::Facet},
    {Tag::MaxLength, Construct::Facet},    {Tag::Enumeration, Construct::FacetThatRepeats},
    {Tag::WhiteSpace, Construct::Facet},   {Tag::Pattern, Construct::FacetThatRepeats},
};
constexpr CChildRule kModelOfType[] = {
    {Tag::SimpleContent, Construct::SimpleContent, true},
    {Tag::ComplexContent, Construct::ComplexContent, true},
    {Tag::Group, Construct::GroupReference},
    {Tag::All, Construct::All},
    {Tag::Choice, Construct::Group},
    {Tag::Sequence, Construct::Group},
};
constexpr CChildRule kParticleOfType[] = {
    {Tag::Group, Construct::GroupReference},
    {Tag::All, Construct::All},
    {Tag::Choice, Construct::Group},
    {Tag::Sequence, Construct::Group},
};
constexpr CChildRule kParticles[] = {
    {Tag::Element, Construct::LocalElement},
    {Tag::Group, Construct::GroupReference},
    {Tag::Choice, Construct::Group},
    {Tag::Sequence, Construct::Group},
    {Tag::Any, Construct::Any},
};
constexpr CChildRule kElementOfAll[] = {{Tag::Element, Construct::ElementOfAll}};
constexpr CChildRule kGroupOfDefinition[] = {
    {Tag::All, Construct::AllOfDefinition},
    {Tag::Choice, Construct::GroupOfDefinition},
    {Tag::Sequence, Construct::GroupOfDefinition},
};
constexpr CChildRule kAttributes[] = {
    {Tag::Attribute, Construct::LocalAttribute},
    {Tag::AttributeGroup, Construct::AttributeGroupReference},
};
constexpr CChildRule kAnyAttribute[] = {{Tag::AnyAttribute, Construct::AnyAttribute}};
constexpr CChildRule kSimpleContentDerivations[] = {
    {Tag::Restriction, Construct::SimpleContentRestriction},
    {Tag::Extension, Construct::SimpleContentExtension},
};
constexpr CChildRule kComplexContentDerivations[] = {
    {Tag::Restriction, Construct::ComplexDerivation},
    {Tag::Extension, Construct::ComplexDerivation},
};
constexpr CChildRule kIdentityConstraints[] = {
    {Tag::Unique, Construct::Key},
    {Tag::Key, Construct::Key},
    {Tag::Keyref, Construct::Keyref},
};
constexpr CChildRule kSelector[] = {{Tag::Selector, Construct::XPath}};
constexpr CChildRule kFields[] = {{Tag::Field, Construct::XPath}};

constexpr CContentPart Optional(TableView<CChildRule> children) {
    return {children, false, false};
}
constexpr CContentPart One(TableView<CChildRule> children) {
    return {children, true, false};
}
constexpr CContentPart Many(TableView<CChildRule> children) {
    return {children, false, true};
}
constexpr CContentPart OneOrMore(TableView<CChildRule> children) {
    return {children, true, true};
}

// --- content
// -------------------------------------------------------------------------------------------------

constexpr CContentPart kSchemaContent[] = {Many(kSources), Many(kGlobals)};
constexpr CContentPart kRedefineContent[] = {Many(kRedefinable)};
constexpr CContentPart kAnnotationContent[] = {Many(kNotes)};
constexpr CContentPart kAnnotationOnly[] = {Optional(kAnnotation)};
constexpr CContentPart kSimpleTypeContent[] = {Optional(kAnnotation), One(kSimpleDerivations)};
constexpr CContentPart kSimpleRestrictionContent[] = {Optional(kAnnotation), Optional(kSimpleType),
                                                      Many(kFacets)};
constexpr CContentPart kListContent[] = {Optional(kAnnotation), Optional(kSimpleType)};
constexpr CContentPart kUnionContent[] = {Optional(kAnnotation), Many(kSimpleType)};
constexpr CContentPart kComplexTypeContent[] = {Optional(kAnnotation), Optional(kModelOfType),
                                                Many(kAttributes), Optional(kAnyAttribute)};
constexpr CContentPart kSimpleContentContent[] = {Optional(kAnnotation), One(kSimpleContentDerivations)};
constexpr CContentPart kSimpleContentRestrictionContent[] = {
    Optional(kAnnotation), Optional(kSimpleType), Many(kFacets), Many(kAttributes), Optional(kAnyAttribute)};
constexpr CContentPart kAttributesContent[] = {Optional(kAnnotation), Many(kAttributes),
                                               Optional(kAnyAttribute)};
constexpr CContentPart kComplexContentContent[] = {Optional(kAnnotation), One(kComplexContentDerivations)};
constexpr CContentPart kComplexDerivationContent[] = {Optional(kAnnotation), Optional(kParticleOfType),
                                                      Many(kAttributes), Optional(kAnyAttribute)};
constexpr CContentPart kElementContent[] = {Optional(kAnnotation), Optional(kTypes),
                                            Many(kIdentityConstraints)};
constexpr CContentPart kAttributeContent[] = {Optional(kAnnotation), Optional(kSimpleType)};
constexpr CContentPart kGroupDefinitionContent[] = {Optional(kAnnotation), One(kGroupOfDefinition)};
constexpr CContentPart kAllContent[] = {Optional(kAnnotation), Many(kElementOfAll)};
constexpr CContentPart kGroupContent[] = {Optional(kAnnotation), Many(kParticles)};
constexpr CContentPart kKeyContent[] = {Optional(kAnnotation), One(kSelector), OneOrMore(kFields)};

// --- attributes
// ----------------------------------------------------------------------------------------------

constexpr bool kRequired = true;

constexpr CAttributeRule kSchemaAttributes[] = {
    {"id", Form::Id},
    {"targetNamespace", Form::TargetNamespace},
    {"version", Form::Text},
    {"elementFormDefault", Form::Qualification},
    {"attributeFormDefault", Form::Qualification},
    {"blockDefault", Form::BlockSet},
    {"finalDefault", Form::FullDerivationSet},
};
constexpr CAttributeRule kIdOnly[] = {{"id", Form::Id}};
constexpr CAttributeRule kIncludeAttributes[] = {
    {"id", Form::Id},
    {"schemaLocation", Form::AnyUri, kRequired},
};
constexpr CAttributeRule kImportAttributes[] = {
    {"id", Form::Id},
    {"namespace", Form::AnyUri},
    {"schemaLocation", Form::AnyUri},
};
constexpr CAttributeRule kNoteAttributes[] = {{"source", Form::AnyUri}};
constexpr CAttributeRule kGlobalSimpleTypeAttributes[] = {
    {"id", Form::Id},
    {"name", Form::NcName, kRequired},
    {"final", Form::SimpleDerivationSet},
};
constexpr CAttributeRule kSimpleRestrictionAttributes[] = {{"id", Form::Id}, {"base", Form::QName}};
constexpr CAttributeRule kListAttributes[] = {{"id", Form::Id}, {"itemType", Form::QName}};
constexpr CAttributeRule kUnionAttributes[] = {{"id", Form::Id}, {"memberTypes", Form::QNames}};
// The values of facets depend on the type that they restrict.
constexpr CAttributeRule kFacetAttributes[] = {
    {"id", Form::Id},
    {"value", Form::Text, kRequired},
    {"fixed", Form::Boolean},
};
constexpr CAttributeRule kFacetThatRepeatsAttributes[] = {
    {"id", Form::Id},
    {"value", Form::Text, kRequired},
};
constexpr CAttributeRule kGlobalComplexTypeAttributes[] = {
    {"id", Form::Id},
    {"name", Form::NcName, kRequired},
    {"mixed", Form::Boolean},
    {"abstract", Form::Boolean},
    {"block", Form::DerivationSet},
    {"final", Form::DerivationSet},
};
constexpr CAttributeRule kMixedAttributes[] = {{"id", Form::Id}, {"mixed", Form::Boolean}};
constexpr CAttributeRule kDerivationAttributes[] = {
    {"id", Form::Id},
    {"base", Form::QName, kRequired},
};
constexpr CAttributeRule kGlobalElementAttributes[] = {
    {"id", Form::Id},
    {"name", Form::NcName, kRequired},
    {"type", Form::QName},
    {"substitutionGroup", Form::QName},
    {"default", Form::Text},
    {"fixed", Form::Text},
    {"nillable", Form::Boolean},
    {"abstract", Form::Boolean},
    {"block", Form::BlockSet},
    {"final", Form::DerivationSet},
};
// Name or reference: the local rules decide.
constexpr CAttributeRule kLocalElementAttributes[] = {
    {"id", Form::Id},          {"name", Form::NcName},        {"ref", Form::QName},
    {"type", Form::QName},     {"minOccurs", Form::Count},    {"maxOccurs", Form::CountOrUnbounded},
    {"default", Form::Text},   {"fixed", Form::Text},         {"nillable", Form::Boolean},
    {"block", Form::BlockSet}, {"form", Form::Qualification},
};
constexpr CAttributeRule kElementOfAllAttributes[] = {
    {"id", Form::Id},          {"name", Form::NcName},         {"ref", Form::QName},
    {"type", Form::QName},     {"minOccurs", Form::ZeroOrOne}, {"maxOccurs", Form::ZeroOrOne},
    {"default", Form::Text},   {"fixed", Form::Text},          {"nillable", Form::Boolean},
    {"block", Form::BlockSet}, {"form", Form::Qualification},
};
constexpr CAttributeRule kGlobalAttributeAttributes[] = {
    {"id", Form::Id},      {"name", Form::NcName, kRequired}, {"type", Form::QName}, {"default", Form::Text},
    {"fixed", Form::Text},
};
constexpr CAttributeRule kLocalAttributeAttributes[] = {
    {"id", Form::Id},   {"name", Form::NcName},  {"ref", Form::QName},  {"type", Form::QName},
    {"use", Form::Use}, {"default", Form::Text}, {"fixed", Form::Text}, {"form", Form::Qualification},
};
constexpr CAttributeRule kDefinitionAttributes[] = {
    {"id", Form::Id},
    {"name", Form::NcName, kRequired},
};
constexpr CAttributeRule kReferenceAttributes[] = {
    {"id", Form::Id},
    {"ref", Form::QName, kRequired},
};
constexpr CAttributeRule kGroupReferenceAttributes[] = {
    {"id", Form::Id},
    {"ref", Form::QName, kRequired},
    {"minOccurs", Form::Count},
    {"maxOccurs", Form::CountOrUnbounded},
};
constexpr CAttributeRule kAllAttributes[] = {
    {"id", Form::Id},
    {"minOccurs", Form::ZeroOrOne},
    {"maxOccurs", Form::One},
};
constexpr CAttributeRule kGroupAttributes[] = {
    {"id", Form::Id},
    {"minOccurs", Form::Count},
    {"maxOccurs", Form::CountOrUnbounded},
};
constexpr CAttributeRule kAnyAttributes[] = {
    {"id", Form::Id},
    {"minOccurs", Form::Count},
    {"maxOccurs", Form::CountOrUnbounded},
    {"namespace", Form::NamespaceList},
    {"processContents", Form::ProcessContents},
};
constexpr CAttributeRule kAnyAttributeAttributes[] = {
    {"id", Form::Id},
    {"namespace", Form::NamespaceList},
    {"processContents", Form::ProcessContents},
};
constexpr CAttributeRule kNotationAttributes[] = {
    {"id", Form::Id},
    {"name", Form::NcName, kRequired},
    {"public", Form::Text},
    {"system", Form::AnyUri},
};
constexpr CAttributeRule kKeyrefAttributes[] = {
    {"id", Form::Id},
    {"name", Form::NcName, kRequired},
    {"refer", Form::QName, kRequired},
};
constexpr CAttributeRule kXPathAttributes[] = {
    {"id", Form::Id},
    {"xpath", Form::Text, kRequired},
};

// --- both, in the order of Construct
// -------------------------------------------------------------------------

constexpr CConstructRule kRules[] = {
    /* Schema */ {kSchemaAttributes, kSchemaContent},
    /* Include */ {kIncludeAttributes, kAnnotationOnly},
    /* Import */ {kImportAttributes, kAnnotationOnly},
    /* Redefine */ {kIncludeAttributes, kRedefineContent},
    /* Annotation */ {kIdOnly, kAnnotationContent},
    /* Appinfo */ {kNoteAttributes, {}},
    /* Documentation */ {kNoteAttributes, {}},
    /* GlobalSimpleType */ {kGlobalSimpleTypeAttributes, kSimpleTypeContent},
    /* LocalSimpleType */ {kIdOnly, kSimpleTypeContent},
    /* SimpleRestriction */ {kSimpleRestrictionAttributes, kSimpleRestrictionContent},
    /* List */ {kListAttributes, kListContent},
    /* Union */ {kUnionAttributes, kUnionContent},
    /* Facet */ {kFacetAttributes, kAnnotationOnly},
    /* FacetThatRepeats */ {kFacetThatRepeatsAttributes, kAnnotationOnly},
    /* GlobalComplexType */ {kGlobalComplexTypeAttributes, kComplexTypeContent},
    /* LocalComplexType */ {kMixedAttributes, kComplexTypeContent},
    /* SimpleContent */ {kIdOnly, kSimpleContentContent},
    /* SimpleContentRestriction */ {kDerivationAttributes, kSimpleContentRestrictionContent},
    /* SimpleContentExtension */ {kDerivationAttributes, kAttributesContent},
    /* ComplexContent */ {kMixedAttributes, kComplexContentContent},
    /* ComplexDerivation */ {kDerivationAttributes, kComplexDerivationContent},
    /* GlobalElement */ {kGlobalElementAttributes, kElementContent},
    /* LocalElement */ {kLocalElementAttributes, kElementContent},
    /* ElementOfAll */ {kElementOfAllAttributes, kElementContent},
    /* GlobalAttribute */ {kGlobalAttributeAttributes, kAttributeContent},
    /* LocalAttribute */ {kLocalAttributeAttributes, kAttributeContent},
    /* AttributeGroupDefinition */ {kDefinitionAttributes, kAttributesContent},
    /* AttributeGroupReference */ {kReferenceAttributes, kAnnotationOnly},
    /* AnyAttribute */ {kAnyAttributeAttributes, kAnnotationOnly},
    /* GroupDefinition */ {kDefinitionAttributes, kGroupDefinitionContent},
    /* GroupReference */ {kGroupReferenceAttributes, kAnnotationOnly},
    /* AllOfDefinition */ {kIdOnly, kAllContent},
    /* All */ {kAllAttributes, kAllContent},
    /* GroupOfDefinition */ {kIdOnly, kGroupContent},
    /* Group */ {kGroupAttributes, kGroupContent},
    /* Any */ {kAnyAttributes, kAnnotationOnly},
    /* Notation */ {kNotationAttributes, kAnnotationOnly},
    /* Key */ {kDefinitionAttributes, kKeyContent},
    /* Keyref */ {kKeyrefAttributes, kKeyContent},
    /* XPath */ {kXPathAttributes, kAnnotationOnly},
};
static_assert(std::size(kRules) == static_cast<std::size_t>(Construct::Count));

template <class Words>
bool IsOneOf(std::string_view name, const Words& words) noexcept {
    return std::find(std::begin(words), std::end(words), name) != std::end(words);
}

}  // namespace

const CConstructRule& RuleOf(Construct construct) noexcept {
    return kRules[static_cast<std::size_t>(construct)];
}

std::string ContentText(const CConstructRule& rule) {
    std::string text = "(";
    for (const CContentPart& part : rule.content) {
        if (text.size() > 1) text += ", ";
        if (part.children.count > 1) text += '(';
        for (const CChildRule& child : part.children) {
            if (&child != part.children.begin()) text += " | ";
            text += TagName(child.tag);
        }
        if (part.children.count > 1) text += ')';
        if (part.repeats) {
            text += part.isRequired ? '+' : '*';
        } else if (!part.isRequired) {
            text += '?';
        }
    }
    return text += ')';
}

bool IsElementOf11(std::string_view name) noexcept {
    static constexpr std::string_view kNames[] = {
        "alternative",      "assert",      "assertion", "defaultOpenContent",
        "explicitTimezone", "openContent", "override",
    };
    return IsOneOf(name, kNames);
}

bool IsAttributeOf11(SchemaTag tag, std::string_view name) noexcept {
    static constexpr std::string_view kNames[] = {
        "defaultAttributes", "defaultAttributesApply", "inheritable",           "notNamespace",
        "notQName",          "targetNamespace",        "xpathDefaultNamespace",
    };
    if (IsOneOf(name, kNames)) return true;
    return name == "ref" && (tag == SchemaTag::Key || tag == SchemaTag::Keyref || tag == SchemaTag::Unique);
}

}  // namespace KvXmlLib16::internal
