#include "kvxml/schema/binding/internal/value_planner.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace KvXmlLib16::internal {

namespace {

std::int32_t ToCount(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '+'))
        text.remove_prefix(1);
    std::int32_t count = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), count);
    return result.ec == std::errc::result_out_of_range ? INT32_MAX : count;
}

std::string_view Trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// The pattern that a built-in type's values match, where the kind that holds them does not see to it (XML
/// Schema Part 2, 3.3). Null: none.
const char* BuiltInPattern(BuiltInType type) noexcept {
    switch (type) {
        case BuiltInType::Language:
            return "[a-zA-Z]{1,8}(-[a-zA-Z0-9]{1,8})*";
        case BuiltInType::NMTOKEN:
            return "\\c+";
        case BuiltInType::Name:
            return "\\i\\c*";
        case BuiltInType::NCName:
        case BuiltInType::ID:
        case BuiltInType::IDREF:
        case BuiltInType::ENTITY:
            return "[\\i-[:]][\\c-[:]]*";
        case BuiltInType::QName:
        case BuiltInType::Notation:
            return "([\\i-[:]][\\c-[:]]*:)?[\\i-[:]][\\c-[:]]*";
        default:
            return nullptr;
    }
}

void AddBuiltIn(BuiltInType type, CFacetPlan& facets) {
    if (const char* const pattern = BuiltInPattern(type)) facets.patterns.emplace_back(pattern);
    const auto bound = [](std::string& minimum, const char* text) {
        if (minimum.empty()) minimum = text;
    };
    switch (type) {
        case BuiltInType::NonNegativeInteger:
            if (facets.minExclusive.empty()) bound(facets.minInclusive, "0");
            break;
        case BuiltInType::PositiveInteger:
            if (facets.minExclusive.empty()) bound(facets.minInclusive, "1");
            break;
        case BuiltInType::NonPositiveInteger:
            if (facets.maxExclusive.empty()) bound(facets.maxInclusive, "0");
            break;
        case BuiltInType::NegativeInteger:
            if (facets.maxExclusive.empty()) bound(facets.maxInclusive, "-1");
            break;
        case BuiltInType::NMTOKENS:
        case BuiltInType::IDREFS:
        case BuiltInType::ENTITIES:
            if (facets.length == -1 && facets.minLength == -1) facets.minLength = 1;
            break;
        default:
            break;
    }
}

/// Adds what one step says and no step nearer to the type has said.
void AddStep(const CSimpleTypeDefinition& type, bool& hasEnumeration, CFacetPlan& facets) {
    const auto count = [](std::int32_t& place, std::string_view text) {
        if (place == -1) place = ToCount(text);
    };
    const bool hasMinimum = !facets.minInclusive.empty() || !facets.minExclusive.empty();
    const bool hasMaximum = !facets.maxInclusive.empty() || !facets.maxExclusive.empty();
    std::string pattern;
    bool hasPattern = false;
    std::vector<std::string> enumeration;
    for (const CFacet* const facet : type.ownFacets) {
        switch (facet->facet) {
            case FacetKind::Length:
                count(facets.length, facet->value);
                break;
            case FacetKind::MinLength:
                count(facets.minLength, facet->value);
                break;
            case FacetKind::MaxLength:
                count(facets.maxLength, facet->value);
                break;
            case FacetKind::TotalDigits:
                count(facets.totalDigits, facet->value);
                break;
            case FacetKind::FractionDigits:
                count(facets.fractionDigits, facet->value);
                break;
            case FacetKind::Pattern:
                if (hasPattern) pattern += '|';
                pattern += facet->value;
                hasPattern = true;
                break;
            case FacetKind::Enumeration:
                enumeration.emplace_back(facet->value);
                break;
            case FacetKind::MinInclusive:
                if (!hasMinimum) facets.minInclusive = Trimmed(facet->value);
                break;
            case FacetKind::MinExclusive:
                if (!hasMinimum) facets.minExclusive = Trimmed(facet->value);
                break;
            case FacetKind::MaxInclusive:
                if (!hasMaximum) facets.maxInclusive = Trimmed(facet->value);
                break;
            case FacetKind::MaxExclusive:
                if (!hasMaximum) facets.maxExclusive = Trimmed(facet->value);
                break;
            case FacetKind::WhiteSpace:
                break;
        }
    }
    // An empty pattern admits the empty text alone, which no pattern of its own says to those who read it.
    if (hasPattern) facets.patterns.push_back(pattern.empty() ? "()" : pattern);
    if (!enumeration.empty() && !hasEnumeration) {
        facets.enumeration = std::move(enumeration);
        hasEnumeration = true;
    }
}

WhiteSpace WhitespaceOf(const CSimpleTypeDefinition& type) {
    for (const CTypeDefinition* step = &type; step != nullptr && step->IsSimple();
         step = step->baseTypeDefinition) {
        const CSimpleTypeDefinition& simple = *step->AsSimple();
        for (const CFacet* const facet : simple.ownFacets) {
            if (facet->facet != FacetKind::WhiteSpace) continue;
            if (facet->value == "preserve") return WhiteSpace::Preserve;
            return facet->value == "replace" ? WhiteSpace::Replace : WhiteSpace::Collapse;
        }
        if (!simple.isBuiltIn) continue;
        if (simple.builtInType == BuiltInType::String || simple.builtInType == BuiltInType::AnySimpleType)
            return WhiteSpace::Preserve;
        return simple.builtInType == BuiltInType::NormalizedString ? WhiteSpace::Replace
                                                                   : WhiteSpace::Collapse;
    }
    return WhiteSpace::Collapse;
}

/// More texts than these are checked as a facet instead of becoming names.
constexpr std::size_t kMaxEnumerators = 2000;

}  // namespace

ItemType ToItemType(BuiltInType type) noexcept {
    switch (type) {
        case BuiltInType::Boolean:
            return ItemType_boolean;
        case BuiltInType::Decimal:
            return ItemType_decimal;
        case BuiltInType::Float:
            return ItemType_r4;
        case BuiltInType::Double:
            return ItemType_r8;
        case BuiltInType::Duration:
            return ItemType_duration;
        case BuiltInType::DateTime:
            return ItemType_datetime;
        case BuiltInType::Time:
            return ItemType_time;
        case BuiltInType::Date:
            return ItemType_date;
        case BuiltInType::GYearMonth:
            return ItemType_yearMonth;
        case BuiltInType::GYear:
            return ItemType_year;
        case BuiltInType::GMonthDay:
            return ItemType_monthDay;
        case BuiltInType::GDay:
            return ItemType_day;
        case BuiltInType::GMonth:
            return ItemType_month;
        case BuiltInType::HexBinary:
            return ItemType_hexBinary;
        case BuiltInType::Base64Binary:
            return ItemType_base64Binary;
        case BuiltInType::Integer:
        case BuiltInType::NonPositiveInteger:
        case BuiltInType::NegativeInteger:
        case BuiltInType::NonNegativeInteger:
        case BuiltInType::PositiveInteger:
            return ItemType_integer;
        case BuiltInType::Long:
            return ItemType_i8;
        case BuiltInType::Int:
            return ItemType_i4;
        case BuiltInType::Short:
            return ItemType_i2;
        case BuiltInType::Byte:
            return ItemType_i1;
        case BuiltInType::UnsignedLong:
            return ItemType_ui8;
        case BuiltInType::UnsignedInt:
            return ItemType_ui4;
        case BuiltInType::UnsignedShort:
            return ItemType_ui2;
        case BuiltInType::UnsignedByte:
            return ItemType_ui1;
        default:
            return ItemType_string;
    }
}

CFacetPlan CollectFacets(const CSimpleTypeDefinition& type) {
    CFacetPlan facets;
    bool hasEnumeration = false;
    for (const CTypeDefinition* step = &type; step != nullptr && step->IsSimple();
         step = step->baseTypeDefinition) {
        const CSimpleTypeDefinition& simple = *step->AsSimple();
        if (simple.isBuiltIn) {
            AddBuiltIn(simple.builtInType, facets);
            break;
        }
        AddStep(simple, hasEnumeration, facets);
        if (simple.isConstructed) break;
    }
    return facets;
}

const CValuePlan& CValuePlanner::Plan(const CSimpleTypeDefinition& type) {
    if (const auto found = m_byType.find(&type); found != m_byType.end()) return *found->second;
    CValuePlan plan = Make(type);
    m_values.push_back(std::move(plan));
    m_byType[&type] = &m_values.back();
    return m_values.back();
}

const CValuePlan& CValuePlanner::PlanHeldAs(const CSimpleTypeDefinition& type, const CValuePlan& held) {
    const CValuePlan& plain = Plan(type);
    const bool isSame = plain.item == held.item && plain.enumeration == held.enumeration &&
                        (plain.list == nullptr) == (held.list == nullptr);
    if (isSame) return plain;
    const CValuePlan*& known = m_heldAs[{&type, &held}];
    if (known != nullptr) return *known;
    CValuePlan plan = plain;
    plan.item = held.item;
    plan.enumeration = held.enumeration;
    if (held.list == nullptr && plain.list != nullptr) {  // a union that became a list, held as text
        plan.list = nullptr;
        plan.members = {&plain};
        plan.facets = CFacetPlan();
    } else if (held.list != nullptr) {
        plan.list = held.list;
    } else if (held.item == ItemType_string && held.enumeration == nullptr && plain.item != ItemType_string) {
        plan.members = {&plain};  // text that is a valid value
        plan.facets = CFacetPlan();
    } else if (plain.enumeration != nullptr) {
        plan.facets.enumeration.clear();
        for (const CEnumPlan::Value& value : plain.enumeration->values)
            plan.facets.enumeration.emplace_back(value.text);
    }
    m_values.push_back(std::move(plan));
    known = &m_values.back();
    return *known;
}

const CValuePlan& CValuePlanner::PlanAsText(const CSimpleTypeDefinition& type) {
    const CValuePlan*& known = m_asText[&type];
    if (known != nullptr) return *known;
    CValuePlan plan;
    plan.type = &type;
    plan.whitespace = WhiteSpace::Collapse;
    plan.members = {&Plan(type)};
    m_values.push_back(std::move(plan));
    known = &m_values.back();
    return *known;
}

CValuePlan CValuePlanner::Make(const CSimpleTypeDefinition& type) {
    CValuePlan plan;
    plan.type = &type;
    plan.whitespace = WhitespaceOf(type);
    switch (type.variety) {
        case CSimpleTypeDefinition::Variety::List:
            plan.list = &Plan(*type.itemTypeDefinition);
            plan.item = plan.list->item;
            plan.whitespace = WhiteSpace::Collapse;
            plan.facets = CollectFacets(type);
            break;
        case CSimpleTypeDefinition::Variety::Union:
            for (const CSimpleTypeDefinition* const member : type.memberTypeDefinitions)
                plan.members.push_back(&Plan(*member));
            plan.facets = CollectFacets(type);
            plan.whitespace = WhiteSpace::Preserve;  // each member has its own
            break;
        case CSimpleTypeDefinition::Variety::Atomic:
            MakeAtomic(type, plan);
            break;
        case CSimpleTypeDefinition::Variety::Absent:
            break;
    }
    return plan;
}

void CValuePlanner::MakeAtomic(const CSimpleTypeDefinition& type, CValuePlan& plan) {
    plan.item = ToItemType(type.builtInType);
    plan.facets = CollectFacets(type);
    const bool isText = plan.item == ItemType_string;
    if (!isText && !plan.facets.patterns.empty()) {
        // The facets ask for a form that the canonical text of the value need not have: the text is kept.
        m_values.push_back(plan);
        CValuePlan& value = m_values.back();
        value.facets.patterns.clear();
        plan.members = {&value};
        plan.item = ItemType_string;
        CFacetPlan patterns;
        patterns.patterns = std::move(plan.facets.patterns);
        plan.facets = std::move(patterns);
        return;
    }
    const bool isName = type.builtInType == BuiltInType::QName || type.builtInType == BuiltInType::Notation;
    if (isText && !isName && !plan.facets.enumeration.empty() &&
        plan.facets.enumeration.size() <= kMaxEnumerators) {
        plan.enumeration = &PlanEnumeration(type);
        plan.facets.enumeration.clear();
    }
}

const CEnumPlan& CValuePlanner::PlanEnumeration(const CSimpleTypeDefinition& type) {
    // The step that has the values; types derived from it without a choice of their own share it.
    const CSimpleTypeDefinition* step = &type;
    const auto hasValues = [](const CSimpleTypeDefinition& one) {
        return std::any_of(one.ownFacets.begin(), one.ownFacets.end(),
                           [](const CFacet* facet) { return facet->facet == FacetKind::Enumeration; });
    };
    while (!hasValues(*step))
        step = step->baseTypeDefinition->AsSimple();
    const CEnumPlan*& known = m_byEnumeration[step];
    if (known != nullptr) return *known;
    CEnumPlan plan;
    plan.type = step;
    std::set<std::string_view> seen;
    const bool collapses = WhitespaceOf(*step) == WhiteSpace::Collapse;
    for (const CFacet* const facet : step->ownFacets) {
        if (facet->facet != FacetKind::Enumeration) continue;
        const std::string_view text = collapses ? Trimmed(facet->value) : facet->value;
        if (seen.insert(text).second) plan.values.push_back({text, facet->annotation});
    }
    m_enumerations.push_back(std::move(plan));
    known = &m_enumerations.back();
    return *known;
}

}  // namespace KvXmlLib16::internal
