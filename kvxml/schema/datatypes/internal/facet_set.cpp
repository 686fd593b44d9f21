#include "kvxml/schema/datatypes/internal/facet_set.h"

#include <algorithm>
#include <limits>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/ascii.h"

namespace KvXmlLib16::internal {

namespace {

using Variety = CSimpleTypeDefinition::Variety;

constexpr const char* kFacetNames[] = {"length",       "minLength",    "maxLength",    "pattern",
                                       "enumeration",  "whiteSpace",   "maxInclusive", "maxExclusive",
                                       "minExclusive", "minInclusive", "totalDigits",  "fractionDigits"};

constexpr std::uint32_t Bit(FacetKind kind) noexcept {
    return std::uint32_t{1} << static_cast<unsigned>(kind);
}

constexpr std::uint32_t kLengths =
    Bit(FacetKind::Length) | Bit(FacetKind::MinLength) | Bit(FacetKind::MaxLength);
constexpr std::uint32_t kBounds = Bit(FacetKind::MaxInclusive) | Bit(FacetKind::MaxExclusive) |
                                  Bit(FacetKind::MinExclusive) | Bit(FacetKind::MinInclusive);
constexpr std::uint32_t kDigits = Bit(FacetKind::TotalDigits) | Bit(FacetKind::FractionDigits);
constexpr std::uint32_t kPattern = Bit(FacetKind::Pattern);
constexpr std::uint32_t kEnumeration = Bit(FacetKind::Enumeration);
constexpr std::uint32_t kWhiteSpace = Bit(FacetKind::WhiteSpace);

/// Which facets a type may have (Part 2, 4.1.5).
std::uint32_t ApplicableTo(const CSimpleTypeDefinition& type) noexcept {
    if (type.variety == Variety::Union) return kPattern | kEnumeration;
    if (type.variety == Variety::List) return kLengths | kPattern | kEnumeration | kWhiteSpace;
    switch (type.primitiveTypeDefinition->builtInType) {
        case BuiltInType::Boolean:
            return kPattern | kWhiteSpace;
        case BuiltInType::Decimal:
            return kDigits | kPattern | kEnumeration | kWhiteSpace | kBounds;
        case BuiltInType::String:
        case BuiltInType::HexBinary:
        case BuiltInType::Base64Binary:
        case BuiltInType::AnyURI:
        case BuiltInType::QName:
        case BuiltInType::Notation:
            return kLengths | kPattern | kEnumeration | kWhiteSpace;
        default:
            return kPattern | kEnumeration | kWhiteSpace | kBounds;
    }
}

/// Digits with an optional plus sign; larger numbers than 64 bits hold are the largest.
bool ParseCount(std::string_view text, std::uint64_t& count) noexcept {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return false;
    text = text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
    if (text.front() == '+') text.remove_prefix(1);
    const bool isMinusZero = text.size() > 1 && text.front() == '-';
    if (isMinusZero) text.remove_prefix(1);
    if (text.empty()) return false;
    count = 0;
    for (const char c : text) {
        if (!IsDigit(c)) return false;
        const auto digit = static_cast<std::uint64_t>(c - '0');
        constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
        count = count > (kMost - digit) / 10 ? kMost : count * 10 + digit;
    }
    return !isMinusZero || count == 0;
}

/// Applies the facets of one restriction.
class Narrower {
public:
    Narrower(const CSimpleTypeDefinition& type, const CSimpleTypeChecker& base, CFacetSet& facets,
             IFacetReport& report)
        : m_type(type), m_baseChecker(base), m_base(facets), m_facets(facets), m_report(report) {}

    void Run() {
        const std::uint32_t applicable = ApplicableTo(m_type);
        for (const CFacet* facet : m_type.ownFacets) {
            const char* const name = kFacetNames[static_cast<std::size_t>(facet->facet)];
            if ((applicable & Bit(facet->facet)) == 0) {
                Refuse(*facet, std::string("The facet ") + name + " does not apply to this type.",
                       "cos-applicable-facets");
                continue;
            }
            if ((Bit(facet->facet) & (kPattern | kEnumeration)) == 0 && (m_own & Bit(facet->facet)) != 0) {
                Refuse(*facet, std::string("The facet ") + name + " is given twice.",
                       "src-single-facet-value");
                continue;
            }
            m_own |= Bit(facet->facet);
            Add(*facet);
            if (facet->isFixed) m_facets.fixed |= Bit(facet->facet);
        }
        if (!m_patterns.empty()) m_facets.patterns.push_back(std::move(m_patterns));
        if (m_values != nullptr) m_facets.enumeration = std::move(m_values);
        CheckTogether();
    }

private:
    void Refuse(const CFacet& facet, std::string message, const char* constraint) {
        m_report.Report(facet.place, std::move(message), constraint);
    }
    const CFacet* OwnFacet(FacetKind kind) const noexcept {
        for (const CFacet* facet : m_type.ownFacets) {
            if (facet->facet == kind) return facet;
        }
        return nullptr;
    }
    bool IsOwn(FacetKind kind) const noexcept { return (m_own & Bit(kind)) != 0; }

    void Add(const CFacet& facet) {
        switch (facet.facet) {
            case FacetKind::Length:
                AddCount(facet, m_facets.length, m_base.length);
                break;
            case FacetKind::MinLength:
                AddCount(facet, m_facets.minLength, m_base.minLength);
                break;
            case FacetKind::MaxLength:
                AddCount(facet, m_facets.maxLength, m_base.maxLength);
                break;
            case FacetKind::TotalDigits:
                AddCount(facet, m_facets.totalDigits, m_base.totalDigits);
                break;
            case FacetKind::FractionDigits:
                AddCount(facet, m_facets.fractionDigits, m_base.fractionDigits);
                break;
            case FacetKind::Pattern:
                AddPattern(facet);
                break;
            case FacetKind::Enumeration:
                AddValue(facet);
                break;
            case FacetKind::WhiteSpace:
                AddWhiteSpace(facet);
                break;
            case FacetKind::MinInclusive:
                AddBound(facet, m_facets.minInclusive, m_base.minInclusive);
                break;
            case FacetKind::MaxInclusive:
                AddBound(facet, m_facets.maxInclusive, m_base.maxInclusive);
                break;
            case FacetKind::MinExclusive:
                AddBound(facet, m_facets.minExclusive, m_base.minExclusive);
                break;
            case FacetKind::MaxExclusive:
                AddBound(facet, m_facets.maxExclusive, m_base.maxExclusive);
                break;
        }
    }

    void RefuseFixed(const CFacet& facet) {
        Refuse(facet,
               std::string("The facet ") + kFacetNames[static_cast<std::size_t>(facet.facet)] +
                   " is fixed in the base type.",
               "st-restrict-facets");
    }

    void AddCount(const CFacet& facet, std::optional<std::uint64_t>& place,
                  const std::optional<std::uint64_t>& base) {
        std::uint64_t count = 0;
        if (!ParseCount(facet.value, count) || (facet.facet == FacetKind::TotalDigits && count == 0)) {
            Refuse(facet,
                   "[" + std::string(facet.value) + "] is no value of " +
                       kFacetNames[static_cast<std::size_t>(facet.facet)] + ".",
                   "cvc-datatype-valid.1.2.1");
            return;
        }
        if (base) {
            if (m_base.IsFixed(facet.facet) && count != *base) return RefuseFixed(facet);
            const bool isWider = facet.facet == FacetKind::Length      ? count != *base
                                 : facet.facet == FacetKind::MinLength ? count < *base
                                                                       : count > *base;
            if (isWider) {
                static constexpr const char* kRules[] = {
                    "length-valid-restriction", "minLength-valid-restriction", "maxLength-valid-restriction"};
                const char* const rule = facet.facet == FacetKind::TotalDigits
                                             ? "totalDigits-valid-restriction"
                                         : facet.facet == FacetKind::FractionDigits
                                             ? "fractionDigits-valid-restriction"
                                             : kRules[static_cast<std::size_t>(facet.facet)];
                Refuse(facet, "The facet is wider than that of the base type, " + std::to_string(*base) + ".",
                       rule);
                return;
            }
        }
        place = count;
    }

    void AddPattern(const CFacet& facet) {
        try {
            m_patterns.push_back(CXsdRegex::Get(std::string(facet.value)));
        } catch (const CKvException& e) {
            Refuse(facet, e.GetMessage(), "");
        }
    }

    void AddValue(const CFacet& facet) {
        if (m_values == nullptr) m_values = std::make_shared<std::unordered_set<std::string>>();
        const CVectorScope scope(facet.scope);
        CCheckedValue value;
        std::string error;
        const char* constraint = nullptr;
        if (!m_baseChecker.Check(facet.value, &scope, &value, &error, &constraint)) {
            Refuse(facet, "The value is none of the base type: " + error, "enumeration-valid-restriction");
            return;
        }
        m_values->insert(std::move(value.key));
    }

    void AddWhiteSpace(const CFacet& facet) {
        std::string buffer;
        const std::string_view value = TreatWhiteSpace(facet.value, WhiteSpace::Collapse, buffer);
        WhiteSpace rule{};
        if (value == "preserve") {
            rule = WhiteSpace::Preserve;
        } else if (value == "replace") {
            rule = WhiteSpace::Replace;
        } else if (value == "collapse") {
            rule = WhiteSpace::Collapse;
        } else {
            Refuse(facet, "[" + std::string(value) + "] is no value of whiteSpace.",
                   "cvc-datatype-valid.1.2.1");
            return;
        }
        if (m_base.IsFixed(FacetKind::WhiteSpace) && rule != m_base.whiteSpace) return RefuseFixed(facet);
        if (rule < m_base.whiteSpace) {
            Refuse(facet, "whiteSpace is weaker than that of the base type.", "whiteSpace-valid-restriction");
            return;
        }
        m_facets.whiteSpace = rule;
    }

    void AddBound(const CFacet& facet, std::shared_ptr<const CBound>& place,
                  const std::shared_ptr<const CBound>& base) {
        auto bound = std::make_shared<CBound>();
        std::string buffer;
        bound->text = TreatWhiteSpace(facet.value, m_base.whiteSpace, buffer);
        const BuiltInType primitive = m_type.primitiveTypeDefinition->builtInType;
        const char* const name = kFacetNames[static_cast<std::size_t>(facet.facet)];
        if (!ParseValue(m_type.builtInType, primitive, bound->text, nullptr, bound->value)) {
            Refuse(facet, "[" + bound->text + "] is no value of " + NameOf(m_type.builtInType) + ".",
                   "cvc-datatype-valid.1.2.1");
            return;
        }
        if (base != nullptr && m_base.IsFixed(facet.facet) &&
            Compare(bound->value, base->value) != Order::Equal)
            return RefuseFixed(facet);
        if (const CBound* other = WiderThan(facet.facet, bound->value)) {
            Refuse(facet,
                   std::string("The ") + name + " [" + bound->text +
                       "] does not lie within the base type's bound [" + other->text + "].",
                   Rule(facet.facet));
            return;
        }
        // The base's own bound is no value of it when it is exclusive, but may be given again.
        std::string error;
        const bool isSame = base != nullptr && Compare(bound->value, base->value) == Order::Equal;
        if (!isSame && !m_baseChecker.Check(facet.value, nullptr, nullptr, &error, nullptr)) {
            Refuse(facet, std::string("The ") + name + " is no value of the base type: " + error,
                   Rule(facet.facet));
            return;
        }
        place = std::move(bound);
    }

    static const char* Rule(FacetKind kind) noexcept {
        switch (kind) {
            case FacetKind::MinInclusive:
                return "minInclusive-valid-restriction";
            case FacetKind::MaxInclusive:
                return "maxInclusive-valid-restriction";
            case FacetKind::MinExclusive:
                return "minExclusive-valid-restriction";
            default:
                return "maxExclusive-valid-restriction";
        }
    }

    /// The bound of the base that the new one violates (Part 2, 4.3.7.4 to 4.3.10.4); null when none.
    const CBound* WiderThan(FacetKind kind, const CParsedValue& value) const noexcept {
        const auto violates = [&](const std::shared_ptr<const CBound>& bound, bool lessIsBad, bool equalIsBad,
                                  bool greaterIsBad) {
            if (bound == nullptr) return false;
            const Order order = Compare(value, bound->value);
            return (order == Order::Less && lessIsBad) || (order == Order::Equal && equalIsBad) ||
                   (order == Order::Greater && greaterIsBad);
        };
        const bool isMin = kind == FacetKind::MinInclusive || kind == FacetKind::MinExclusive;
        const bool isInclusive = kind == FacetKind::MinInclusive || kind == FacetKind::MaxInclusive;
        const bool isMaxExclusive = kind == FacetKind::MaxExclusive;
        if (violates(m_base.minInclusive, true, isMaxExclusive, false)) return m_base.minInclusive.get();
        // An equal minExclusive leaves no value, but is not wider.
        if (violates(m_base.maxInclusive, false, false, true)) return m_base.maxInclusive.get();
        if (violates(m_base.minExclusive, true, isInclusive || !isMin, false))
            return m_base.minExclusive.get();
        if (violates(m_base.maxExclusive, false, isInclusive || isMin, true))
            return m_base.maxExclusive.get();
        return nullptr;
    }

    void CheckTogether() {
        CheckLengthsTogether();
        CheckBoundsTogether();
        if (const CFacet* own = OwnFacet(FacetKind::FractionDigits);
            m_facets.fractionDigits && m_facets.totalDigits &&
            *m_facets.fractionDigits > *m_facets.totalDigits) {
            if (own == nullptr) own = OwnFacet(FacetKind::TotalDigits);
            if (own != nullptr)
                Refuse(*own, "fractionDigits is greater than totalDigits.", "fractionDigits-totalDigits");
        }
    }

    void CheckLengthsTogether() {
        const CFacet* const length = OwnFacet(FacetKind::Length);
        const CFacet* const least = OwnFacet(FacetKind::MinLength);
        const CFacet* const most = OwnFacet(FacetKind::MaxLength);
        const bool both =
            m_facets.minLength && m_facets.maxLength && *m_facets.minLength > *m_facets.maxLength;
        if (both && (least != nullptr || most != nullptr)) {
            Refuse(least != nullptr ? *least : *most, "minLength is greater than maxLength.",
                   "minLength-less-than-equal-to-maxLength");
        }
        if (!m_facets.length) return;
        // Beside a length only what was there before the length, and still agrees with it.
        const auto check = [&](const CFacet* own, const std::optional<std::uint64_t>& now,
                               const std::optional<std::uint64_t>& before, bool isMin) {
            if (!now) return;
            const bool contradicts = isMin ? *now > *m_facets.length : *now < *m_facets.length;
            const bool isNew = own != nullptr && now != before;
            const CFacet* const place = own != nullptr ? own : length;
            if (place != nullptr && (contradicts || isNew))
                Refuse(*place, "length cannot be given together with minLength or maxLength.",
                       "length-minLength-maxLength");
        };
        check(least, m_facets.minLength, m_base.minLength, true);
        check(most, m_facets.maxLength, m_base.maxLength, false);
    }

    void CheckBoundsTogether() {
        if (IsOwn(FacetKind::MinInclusive) && IsOwn(FacetKind::MinExclusive))
            Refuse(*OwnFacet(FacetKind::MinExclusive), "minInclusive and minExclusive are both given.",
                   "minInclusive-minExclusive");
        if (IsOwn(FacetKind::MaxInclusive) && IsOwn(FacetKind::MaxExclusive))
            Refuse(*OwnFacet(FacetKind::MaxExclusive), "maxInclusive and maxExclusive are both given.",
                   "maxInclusive-maxExclusive");
        const auto check = [&](FacetKind least, const std::shared_ptr<const CBound>& min, FacetKind most,
                               const std::shared_ptr<const CBound>& max, bool equalIsBad, const char* rule) {
            if (min == nullptr || max == nullptr || (!IsOwn(least) && !IsOwn(most))) return;
            const Order order = Compare(min->value, max->value);
            if (order == Order::Greater || (equalIsBad && order == Order::Equal)) {
                Refuse(*OwnFacet(IsOwn(least) ? least : most),
                       "The lower bound [" + min->text + "] lies above the upper bound [" + max->text + "].",
                       rule);
            }
        };
        check(FacetKind::MinInclusive, m_facets.minInclusive, FacetKind::MaxInclusive, m_facets.maxInclusive,
              false, "minInclusive-less-than-equal-to-maxInclusive");
        check(FacetKind::MinInclusive, m_facets.minInclusive, FacetKind::MaxExclusive, m_facets.maxExclusive,
              true, "minInclusive-less-than-maxExclusive");
        check(FacetKind::MinExclusive, m_facets.minExclusive, FacetKind::MaxInclusive, m_facets.maxInclusive,
              true, "minExclusive-less-than-maxInclusive");
        check(FacetKind::MinExclusive, m_facets.minExclusive, FacetKind::MaxExclusive, m_facets.maxExclusive,
              false, "minExclusive-less-than-equal-to-maxExclusive");
    }

    const CSimpleTypeDefinition& m_type;
    const CSimpleTypeChecker& m_baseChecker;
    const CFacetSet m_base;
    CFacetSet& m_facets;
    IFacetReport& m_report;
    std::uint32_t m_own = 0;
    std::vector<std::shared_ptr<const CXsdRegex>> m_patterns;
    std::shared_ptr<std::unordered_set<std::string>> m_values;
};

}  // namespace

void AddFacets(const CSimpleTypeDefinition& type, const CSimpleTypeChecker& base, CFacetSet& facets,
               IFacetReport& report) {
    if (!type.ownFacets.empty()) Narrower(type, base, facets, report).Run();
}

const char* CheckLengths(const CFacetSet& facets, std::size_t length) noexcept {
    if (facets.length && length != *facets.length) return "cvc-length-valid";
    if (facets.minLength && length < *facets.minLength) return "cvc-minLength-valid";
    if (facets.maxLength && length > *facets.maxLength) return "cvc-maxLength-valid";
    return nullptr;
}

const char* CheckPatterns(const CFacetSet& facets, std::string_view text) {
    if (facets.patterns.empty()) return nullptr;
    const bool isAscii =
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    for (const auto& step : facets.patterns) {
        const bool matches = std::any_of(step.begin(), step.end(), [&](const auto& pattern) {
            return pattern->Match(text, isAscii) == CXsdRegex::Result::Match;
        });
        if (!matches) return "cvc-pattern-valid";
    }
    return nullptr;
}

const char* CheckBounds(const CFacetSet& facets, const CParsedValue& value) noexcept {
    const auto isWithin = [&](const std::shared_ptr<const CBound>& bound, Order wanted, bool equalIsGood) {
        if (bound == nullptr) return true;
        const Order order = Compare(value, bound->value);
        return order == wanted || (equalIsGood && order == Order::Equal);
    };
    if (!isWithin(facets.minInclusive, Order::Greater, true)) return "cvc-minInclusive-valid";
    if (!isWithin(facets.maxInclusive, Order::Less, true)) return "cvc-maxInclusive-valid";
    if (!isWithin(facets.minExclusive, Order::Greater, false)) return "cvc-minExclusive-valid";
    if (!isWithin(facets.maxExclusive, Order::Less, false)) return "cvc-maxExclusive-valid";
    if (value.primitive != BuiltInType::Decimal) return nullptr;
    const std::size_t fraction = value.decimal.fraction.size();
    if (facets.fractionDigits && fraction > *facets.fractionDigits) return "cvc-fractionDigits-valid";
    if (facets.totalDigits) {
        // Zeros between the point and the first other digit do not count: the value is i / 10^n with |i| of
        // so many digits, and n of at most as many.
        const std::size_t digits = value.decimal.whole.size() + fraction;
        if (digits > *facets.totalDigits) return "cvc-totalDigits-valid";
    }
    return nullptr;
}

}  // namespace KvXmlLib16::internal
