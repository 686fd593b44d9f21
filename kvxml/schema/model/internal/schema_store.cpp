#include "kvxml/schema/model/internal/schema_store.h"

#include "kvxml/base/internal/namespace_uris.h"

namespace KvXmlLib16::internal {

namespace {

using Type = BuiltInType;
using Variety = CSimpleTypeDefinition::Variety;

/// A row of the table of built-in types (Part 2, 3.2 and 3.3): the type comes after those that it is made
/// from.
struct BuiltInRow {
    Type type;
    const char* name;
    Type base;
    FacetKind facet =
        FacetKind::WhiteSpace;  ///< one facet that a checker needs to know, if `value` is not null
    const char* value = nullptr;
};

constexpr BuiltInRow kRows[] = {
    {Type::AnySimpleType, "anySimpleType", Type::AnySimpleType},
    {Type::String, "string", Type::AnySimpleType, FacetKind::WhiteSpace, "preserve"},
    {Type::Boolean, "boolean", Type::AnySimpleType},
    {Type::Decimal, "decimal", Type::AnySimpleType},
    {Type::Float, "float", Type::AnySimpleType},
    {Type::Double, "double", Type::AnySimpleType},
    {Type::Duration, "duration", Type::AnySimpleType},
    {Type::DateTime, "dateTime", Type::AnySimpleType},
    {Type::Time, "time", Type::AnySimpleType},
    {Type::Date, "date", Type::AnySimpleType},
    {Type::GYearMonth, "gYearMonth", Type::AnySimpleType},
    {Type::GYear, "gYear", Type::AnySimpleType},
    {Type::GMonthDay, "gMonthDay", Type::AnySimpleType},
    {Type::GDay, "gDay", Type::AnySimpleType},
    {Type::GMonth, "gMonth", Type::AnySimpleType},
    {Type::HexBinary, "hexBinary", Type::AnySimpleType},
    {Type::Base64Binary, "base64Binary", Type::AnySimpleType},
    {Type::AnyURI, "anyURI", Type::AnySimpleType},
    {Type::QName, "QName", Type::AnySimpleType},
    {Type::Notation, "NOTATION", Type::AnySimpleType},
    {Type::NormalizedString, "normalizedString", Type::String, FacetKind::WhiteSpace, "replace"},
    {Type::Token, "token", Type::NormalizedString, FacetKind::WhiteSpace, "collapse"},
    {Type::Language, "language", Type::Token, FacetKind::Pattern, "[a-zA-Z]{1,8}(-[a-zA-Z0-9]{1,8})*"},
    {Type::NMTOKEN, "NMTOKEN", Type::Token, FacetKind::Pattern, "\\c+"},
    {Type::NMTOKENS, "NMTOKENS", Type::NMTOKEN, FacetKind::MinLength, "1"},
    {Type::Name, "Name", Type::Token, FacetKind::Pattern, "\\i\\c*"},
    {Type::NCName, "NCName", Type::Name, FacetKind::Pattern, "[\\i-[:]][\\c-[:]]*"},
    {Type::ID, "ID", Type::NCName},
    {Type::IDREF, "IDREF", Type::NCName},
    {Type::IDREFS, "IDREFS", Type::IDREF, FacetKind::MinLength, "1"},
    {Type::ENTITY, "ENTITY", Type::NCName},
    {Type::ENTITIES, "ENTITIES", Type::ENTITY, FacetKind::MinLength, "1"},
    {Type::Integer, "integer", Type::Decimal, FacetKind::FractionDigits, "0"},
    {Type::NonPositiveInteger, "nonPositiveInteger", Type::Integer, FacetKind::MaxInclusive, "0"},
    {Type::NegativeInteger, "negativeInteger", Type::NonPositiveInteger, FacetKind::MaxInclusive, "-1"},
    {Type::Long, "long", Type::Integer, FacetKind::MinInclusive, "-9223372036854775808"},
    {Type::Int, "int", Type::Long, FacetKind::MinInclusive, "-2147483648"},
    {Type::Short, "short", Type::Int, FacetKind::MinInclusive, "-32768"},
    {Type::Byte, "byte", Type::Short, FacetKind::MinInclusive, "-128"},
    {Type::NonNegativeInteger, "nonNegativeInteger", Type::Integer, FacetKind::MinInclusive, "0"},
    {Type::UnsignedLong, "unsignedLong", Type::NonNegativeInteger, FacetKind::MaxInclusive,
     "18446744073709551615"},
    {Type::UnsignedInt, "unsignedInt", Type::UnsignedLong, FacetKind::MaxInclusive, "4294967295"},
    {Type::UnsignedShort, "unsignedShort", Type::UnsignedInt, FacetKind::MaxInclusive, "65535"},
    {Type::UnsignedByte, "unsignedByte", Type::UnsignedShort, FacetKind::MaxInclusive, "255"},
    {Type::PositiveInteger, "positiveInteger", Type::NonNegativeInteger, FacetKind::MinInclusive, "1"},
};

/// The other bound of the fixed-width integers; null for all other types.
const char* OtherBound(Type type) {
    switch (type) {
        case Type::Long:
            return "9223372036854775807";
        case Type::Int:
            return "2147483647";
        case Type::Short:
            return "32767";
        case Type::Byte:
            return "127";
        default:
            return nullptr;
    }
}

}  // namespace

CSchemaStore::CSchemaStore() {
    MakeBuiltIns();
}

CSchemaStore::~CSchemaStore() = default;

CSchemaDocument& CSchemaStore::MakeDocument() {
    CSchemaDocument& document = m_documents.emplace_back();
    document.number = static_cast<std::uint32_t>(m_documents.size() - 1);
    documents.push_back(&document);
    return document;
}

std::string_view CSchemaStore::Keep(std::string_view text) {
    if (text.empty()) return {};
    return *m_texts.emplace(text).first;
}

const CSchemaStore::Scope* CSchemaStore::KeepScope(Scope scope) {
    for (auto& [prefix, uri] : scope) {
        prefix = Keep(prefix);
        uri = Keep(uri);
    }
    return &m_scopes.emplace_back(std::move(scope));
}

void CSchemaStore::MakeBuiltIns() {
    m_anyType = &Make<CComplexTypeDefinition>();
    CComplexTypeDefinition& anyType = *m_anyType;
    anyType.name = {kSchemaNamespace, "anyType"};
    anyType.baseTypeDefinition = nullptr;
    anyType.contentKind = CComplexTypeDefinition::ContentKind::Mixed;
    auto& wildcard = Make<CWildcard>();
    wildcard.processContents = CWildcard::ProcessContents::Lax;
    wildcard.namespaceText = "##any";
    anyType.attributeWildcard = &wildcard;
    auto& any = Make<CParticle>();
    any.minOccurs = 0;
    any.maxOccurs = CParticle::kUnbounded;
    any.term = &wildcard;
    auto& sequence = Make<CModelGroup>();
    sequence.particles.push_back(&any);
    auto& particle = Make<CParticle>();
    particle.term = &sequence;
    anyType.particle = &particle;
    types.byName.emplace(anyType.name, &anyType);

    const auto addFacet = [this](CSimpleTypeDefinition& type, FacetKind kind, const char* value) {
        auto& facet = Make<CFacet>();
        facet.facet = kind;
        facet.value = value;
        type.ownFacets.push_back(&facet);
    };
    for (const BuiltInRow& row : kRows) {
        auto& type = Make<CSimpleTypeDefinition>();
        m_builtIn[static_cast<std::size_t>(row.type)] = &type;
        type.name = {kSchemaNamespace, row.name};
        type.builtInType = row.type;
        type.isBuiltIn = true;
        types.byName.emplace(type.name, &type);
        if (row.type == Type::AnySimpleType) {
            type.variety = Variety::Absent;
            type.baseTypeDefinition = &anyType;
            continue;
        }
        CSimpleTypeDefinition& base = BuiltIn(row.base);
        if (row.type == Type::NMTOKENS || row.type == Type::IDREFS || row.type == Type::ENTITIES) {
            // A list of the "base", restricted to at least one item: one component stands for both steps.
            type.variety = Variety::List;
            type.itemTypeDefinition = &base;
            type.baseTypeDefinition = &BuiltIn(Type::AnySimpleType);
            type.isConstructed = true;
        } else {
            type.baseTypeDefinition = &base;
            type.primitiveTypeDefinition =
                row.base == Type::AnySimpleType ? &type : base.primitiveTypeDefinition;
        }
        if (row.value != nullptr) addFacet(type, row.facet, row.value);
        if (const char* other = OtherBound(row.type)) addFacet(type, FacetKind::MaxInclusive, other);
    }

    const auto addAttribute = [this](const char* name, Type type) {
        auto& attribute = Make<CAttributeDeclaration>();
        attribute.name = {kInstanceNamespace, name};
        attribute.typeDefinition = &BuiltIn(type);
        attribute.isGlobal = true;
        attributes.byName.emplace(attribute.name, &attribute);
    };
    addAttribute("type", Type::QName);
    addAttribute("nil", Type::Boolean);
    addAttribute("schemaLocation",
                 Type::AnySimpleType);  // a list of anyURI, which the validator reads itself
    addAttribute("noNamespaceSchemaLocation", Type::AnyURI);
}

std::shared_ptr<const CSchemaSet> CSchemaStore::Finish(std::unique_ptr<CSchemaStore> store) {
    return std::shared_ptr<const CSchemaSet>(new CSchemaSet(std::move(store)));
}

}  // namespace KvXmlLib16::internal
