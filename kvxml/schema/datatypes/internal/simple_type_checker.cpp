#include "kvxml/schema/datatypes/internal/simple_type_checker.h"

#include <algorithm>
#include <utility>

#include "kvxml/schema/datatypes/internal/facet_set.h"

namespace KvXmlLib16::internal {

namespace {

using Variety = CSimpleTypeDefinition::Variety;

/// Values in messages are cut at the end of a character.
std::string Shown(std::string_view value) {
    constexpr std::size_t kMost = 80;
    if (value.size() <= kMost) return "[" + std::string(value) + "]";
    std::size_t end = kMost;
    while (end > 0 && (static_cast<unsigned char>(value[end]) & 0xC0) == 0x80)
        --end;
    return "[" + std::string(value.substr(0, end)) + "...]";
}

std::string NameOf(const CSimpleTypeDefinition& type) {
    const CTypeDefinition* named = &type;
    while (named->IsAnonymous() && named->baseTypeDefinition != nullptr)
        named = named->baseTypeDefinition;
    return std::string(named->name.localName);
}

class Checker : public CSimpleTypeChecker {
public:
    bool Check(std::string_view text, const IPrefixScope* scope, CCheckedValue* value, std::string* error,
               const char** constraint) const override {
        switch (variety) {
            case Variety::List:
                return CheckList(text, scope, value, error, constraint);
            case Variety::Union:
                return CheckUnion(text, scope, value, error, constraint);
            default:
                return CheckAtomic(text, scope, value, error, constraint);
        }
    }

    const CSimpleTypeDefinition* type = nullptr;
    Variety variety = Variety::Atomic;
    BuiltInType builtIn = BuiltInType::AnySimpleType;
    BuiltInType primitive = BuiltInType::AnySimpleType;
    CFacetSet facets;
    /// A text type without facets.
    bool IsAnyText() const noexcept {
        return variety == Variety::Atomic &&
               (primitive == BuiltInType::AnySimpleType ||
                (primitive == BuiltInType::String &&
                 (builtIn == BuiltInType::String || builtIn == BuiltInType::NormalizedString ||
                  builtIn == BuiltInType::Token))) &&
               !facets.length && !facets.minLength && !facets.maxLength && facets.patterns.empty() &&
               facets.enumeration == nullptr;
    }

    std::shared_ptr<const Checker> item;
    std::vector<std::shared_ptr<const Checker>> members;
    using CSimpleTypeChecker::m_acceptsAnyText;
    using CSimpleTypeChecker::m_mayHaveReferences;
    bool needsNumber = false;   ///< facets ask for what floating-point text stands for
    bool containsList = false;  ///< a list, or a union with one

private:
    bool Fail(std::string_view text, const char* rule, std::string* error, const char** constraint) const {
        if (constraint != nullptr) *constraint = rule;
        if (error == nullptr) return false;
        *error = "The value " + Shown(text);
        if (std::string_view(rule).substr(0, 18) == "cvc-datatype-valid") {
            *error += " is no value of the type [" + NameOf(*type) + "]" + MembersText() + ".";
            return false;
        }
        // "cvc-maxLength-valid" tells the facet.
        std::string_view facet(rule + 4);
        facet.remove_suffix(6);
        *error += " does not satisfy the facet " + std::string(facet) + " of the type [" + NameOf(*type) +
                  "]" + FacetText(facet) + ".";
        return false;
    }

    std::string FacetText(std::string_view facet) const {
        const auto count = [](const std::optional<std::uint64_t>& number) {
            return number ? ", which is " + std::to_string(*number) : std::string();
        };
        const auto bound = [](const std::shared_ptr<const CBound>& value) {
            return value != nullptr ? ", which is [" + value->text + "]" : std::string();
        };
        if (facet == "length") return count(facets.length);
        if (facet == "minLength") return count(facets.minLength);
        if (facet == "maxLength") return count(facets.maxLength);
        if (facet == "totalDigits") return count(facets.totalDigits);
        if (facet == "fractionDigits") return count(facets.fractionDigits);
        if (facet == "minInclusive") return bound(facets.minInclusive);
        if (facet == "maxInclusive") return bound(facets.maxInclusive);
        if (facet == "minExclusive") return bound(facets.minExclusive);
        if (facet == "maxExclusive") return bound(facets.maxExclusive);
        if (facet == "pattern") return NearestFacets(FacetKind::Pattern, ", which is ", " or ");
        return NearestFacets(FacetKind::Enumeration, ", which has ", ", ");
    }

    /// The values of the facet in the last step of derivation that has it; the first ones of many.
    std::string NearestFacets(FacetKind kind, const char* before, const char* between) const {
        constexpr std::size_t kMost = 8;
        for (const CTypeDefinition* at = type; at != nullptr && at->IsSimple(); at = at->baseTypeDefinition) {
            std::string text;
            std::size_t count = 0;
            for (const CFacet* own : at->AsSimple()->ownFacets) {
                if (own->facet != kind) continue;
                if (++count > kMost) return text + ", ...";
                text += (count == 1 ? before : between) + Shown(own->value);
            }
            if (count != 0) return text;
        }
        return {};
    }

    std::string MembersText() const {
        constexpr std::size_t kMost = 8;
        std::string text;
        for (std::size_t i = 0; i < members.size() && i < kMost; ++i)
            text += (i == 0 ? ", a union of [" : ", [") + NameOf(*members[i]->type) + "]";
        return members.size() > kMost ? text + ", ..." : text;
    }

    bool CheckAtomic(std::string_view raw, const IPrefixScope* scope, CCheckedValue* value,
                     std::string* error, const char** constraint) const {
        std::string buffer;
        const std::string_view text = TreatWhiteSpace(raw, facets.whiteSpace, buffer);
        CParsedValue parsed;
        parsed.isFormOnly = value == nullptr && !needsNumber;
        if (!ParseValue(builtIn, primitive, text, scope, parsed))
            return Fail(text, "cvc-datatype-valid.1.2.1", error, constraint);
        const char* violated = CheckPatterns(facets, text);
        if (violated == nullptr && (facets.length || facets.minLength || facets.maxLength) &&
            primitive != BuiltInType::QName && primitive != BuiltInType::Notation) {
            violated = CheckLengths(facets, LengthOf(parsed));
        }
        if (violated == nullptr) violated = CheckBounds(facets, parsed);
        std::string key;
        if (violated == nullptr && (value != nullptr || facets.enumeration != nullptr)) {
            AppendKey(parsed, key);
            if (facets.enumeration != nullptr && facets.enumeration->count(key) == 0)
                violated = "cvc-enumeration-valid";
        }
        if (violated != nullptr) return Fail(text, violated, error, constraint);
        if (value != nullptr) {
            value->normalized = text;
            value->actualType = type;
            value->key = std::move(key);
            value->references.clear();
            if (builtIn == BuiltInType::ID || builtIn == BuiltInType::IDREF || builtIn == BuiltInType::ENTITY)
                value->references.emplace_back(builtIn, value->normalized);
        }
        return true;
    }

    bool CheckList(std::string_view raw, const IPrefixScope* scope, CCheckedValue* value, std::string* error,
                   const char** constraint) const {
        std::string buffer;
        const std::string_view text = TreatWhiteSpace(raw, WhiteSpace::Collapse, buffer);
        const bool needsKey = value != nullptr || facets.enumeration != nullptr;
        std::size_t count = 0;
        std::string key = "L";
        CCheckedValue one;
        std::vector<std::pair<BuiltInType, std::pair<std::size_t, std::size_t>>> references;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = std::min(text.find(' ', at), text.size());
            const std::string_view part = text.substr(at, end - at);
            if (!item->Check(part, scope, needsKey ? &one : nullptr, error, constraint)) return false;
            if (needsKey) {
                key += '\x01';
                key += one.key;
                for (const auto& reference : one.references)
                    references.push_back({reference.first, {at, part.size()}});
            }
            ++count;
            at = end + 1;
        }
        const char* violated = CheckPatterns(facets, text);
        if (violated == nullptr) violated = CheckLengths(facets, count);
        if (violated == nullptr && facets.enumeration != nullptr && facets.enumeration->count(key) == 0)
            violated = "cvc-enumeration-valid";
        if (violated != nullptr) return Fail(text, violated, error, constraint);
        if (value != nullptr) {
            value->normalized = text;
            value->actualType = type;
            value->key = std::move(key);
            value->references.clear();
            for (const auto& [kind, place] : references)
                value->references.emplace_back(
                    kind, std::string_view(value->normalized).substr(place.first, place.second));
        }
        return true;
    }

    bool CheckUnion(std::string_view raw, const IPrefixScope* scope, CCheckedValue* value, std::string* error,
                    const char** constraint) const {
        CCheckedValue own;
        CCheckedValue& found = value != nullptr ? *value : own;
        for (const auto& member : members) {
            if (!member->Check(raw, scope, &found, nullptr, nullptr)) continue;
            const char* violated = CheckPatterns(facets, found.normalized);
            if (violated == nullptr && facets.enumeration != nullptr &&
                facets.enumeration->count(found.key) == 0)
                violated = "cvc-enumeration-valid";
            return violated == nullptr || Fail(raw, violated, error, constraint);
        }
        return Fail(raw, "cvc-datatype-valid.1.2.3", error, constraint);
    }
};

std::shared_ptr<const Checker> CheckerOf(const CTypeDefinition* type) {
    const CSimpleTypeDefinition* const simple = type == nullptr ? nullptr : type->AsSimple();
    return simple == nullptr ? nullptr : std::static_pointer_cast<const Checker>(simple->checker);
}

void CompileBuiltIn(const CSimpleTypeDefinition& type, Checker& checker) {
    const BuiltInType primitive = checker.primitive;
    if (checker.variety == Variety::Atomic) {
        checker.facets.whiteSpace = primitive == BuiltInType::String          ? checker.facets.whiteSpace
                                    : primitive == BuiltInType::AnySimpleType ? WhiteSpace::Preserve
                                                                              : WhiteSpace::Collapse;
        if (primitive != BuiltInType::String && primitive != BuiltInType::AnySimpleType)
            checker.facets.fixed |= std::uint32_t{1} << static_cast<unsigned>(FacetKind::WhiteSpace);
    }
    for (const CFacet* facet : type.ownFacets) {
        const auto bound = [&] {
            auto made = std::make_shared<CBound>();
            made->text = facet->value;
            ParseValue(BuiltInType::Integer, BuiltInType::Decimal, made->text, nullptr, made->value);
            return made;
        };
        switch (facet->facet) {
            case FacetKind::WhiteSpace:
                checker.facets.whiteSpace = facet->value == "replace"    ? WhiteSpace::Replace
                                            : facet->value == "collapse" ? WhiteSpace::Collapse
                                                                         : WhiteSpace::Preserve;
                break;
            case FacetKind::MinLength:
                checker.facets.minLength = 1;
                break;
            case FacetKind::FractionDigits:
                checker.facets.fractionDigits = 0;
                checker.facets.fixed |= std::uint32_t{1} << static_cast<unsigned>(FacetKind::FractionDigits);
                break;
            case FacetKind::MinInclusive:
                checker.facets.minInclusive = bound();
                break;
            case FacetKind::MaxInclusive:
                checker.facets.maxInclusive = bound();
                break;
            default:
                break;  // patterns of built-in types are rules of their lexical forms
        }
    }
}

}  // namespace

std::shared_ptr<const CSimpleTypeChecker> CompileSimpleType(const CSimpleTypeDefinition& type,
                                                            IFacetReport& report) {
    auto checker = std::make_shared<Checker>();
    const bool isDerived = !type.isConstructed && !type.isBuiltIn;
    if (const auto base = CheckerOf(type.baseTypeDefinition); base != nullptr && !type.isConstructed) {
        *checker = *base;
    } else if (isDerived) {
        return nullptr;
    }
    checker->type = &type;
    checker->variety = type.variety == Variety::Absent ? Variety::Atomic : type.variety;
    checker->builtIn = type.builtInType;
    checker->primitive = type.primitiveTypeDefinition != nullptr ? type.primitiveTypeDefinition->builtInType
                                                                 : BuiltInType::AnySimpleType;
    if (type.isConstructed && type.variety == Variety::List) {
        checker->facets.whiteSpace = WhiteSpace::Collapse;
        checker->facets.fixed = std::uint32_t{1} << static_cast<unsigned>(FacetKind::WhiteSpace);
        checker->item = CheckerOf(type.itemTypeDefinition);
        if (checker->item == nullptr) return nullptr;
        if (checker->item->containsList)
            report.Report(type.place, "The items of a list cannot be lists.", "cos-st-restricts.2.1");
        checker->containsList = true;
        checker->m_mayHaveReferences = checker->item->m_mayHaveReferences;
    } else if (type.isConstructed && type.variety == Variety::Union) {
        checker->facets.whiteSpace = WhiteSpace::Collapse;
        for (const CSimpleTypeDefinition* member : type.memberTypeDefinitions) {
            const auto compiled = CheckerOf(member);
            if (compiled == nullptr) continue;
            checker->containsList = checker->containsList || compiled->containsList;
            checker->m_mayHaveReferences = checker->m_mayHaveReferences || compiled->m_mayHaveReferences;
            // What refused a value once refuses it again, and unions of unions would ask ever more often.
            if (std::find(checker->members.begin(), checker->members.end(), compiled) ==
                checker->members.end())
                checker->members.push_back(compiled);
        }
    }
    if (checker->builtIn == BuiltInType::ID || checker->builtIn == BuiltInType::IDREF ||
        checker->builtIn == BuiltInType::ENTITY) {
        checker->m_mayHaveReferences = true;
    }
    if (type.isBuiltIn) {
        CompileBuiltIn(type, *checker);
    } else {
        AddFacets(type,
                  isDerived ? static_cast<const CSimpleTypeChecker&>(*CheckerOf(type.baseTypeDefinition))
                            : static_cast<const CSimpleTypeChecker&>(*checker),
                  checker->facets, report);
    }
    checker->m_acceptsAnyText = checker->IsAnyText();
    const CFacetSet& facets = checker->facets;
    checker->needsNumber = facets.enumeration != nullptr || facets.minInclusive != nullptr ||
                           facets.maxInclusive != nullptr || facets.minExclusive != nullptr ||
                           facets.maxExclusive != nullptr;
    return checker;
}

}  // namespace KvXmlLib16::internal
