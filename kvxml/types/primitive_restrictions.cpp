#include "kvxml/types/primitive_restrictions.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/types/conversions.h"
#include "kvxml/types/internal/facets.h"
#include "kvxml/types/internal/item_traits.h"
#include "kvxml/types/internal/whitespace.h"

namespace KvXmlLib16 {

using internal::BadFacet;
using internal::CheckDigits;
using internal::CheckLengths;
using internal::CXsdRegex;
using internal::Facets;
using internal::FillBounds;
using internal::FillEnumeration;
using internal::OrEmpty;
using internal::TypedFacets;

namespace {

constexpr auto kCollapse = CWhitespaceUtils::WhitespaceRule_Collapse;
constexpr auto kNone = CWhitespaceUtils::WhitespaceRule_None;
constexpr std::size_t kMaxShownValue = 1000;

// --- violations -------------------------------------------------------------------------------------------

[[noreturn]] void Violation(std::string_view name, std::string_view value, const char* facet,
                            std::string_view limit) {
    std::string message = "Invalid Value for ";
    message.append(name).append(" [");
    if (value.size() <= kMaxShownValue) {
        message.append(value);
    } else {
        std::size_t shown = kMaxShownValue;
        while (shown > 0 && (static_cast<unsigned char>(value[shown]) & 0xC0) == 0x80)
            --shown;
        message.append(value.substr(0, shown)).append("...");
    }
    message.append("]. It violates the facet ").append(facet).append(" [").append(limit).append("].");
    throw CKvInvalidValueException(std::move(message));
}

// --- checking ---------------------------------------------------------------------------------------------

// One check: who is checked against what, and how the value reads.
template <class MakeText>
class Checker {
public:
    Checker(const Facets& facets, std::string_view name, std::string_view lexical, MakeText makeText)
        : m_facets(facets), m_name(name), m_lexical(lexical), m_makeText(std::move(makeText)) {}

    [[noreturn]] void Fail(const char* facet, std::string_view limit) const {
        if (!m_lexical.empty()) Violation(m_name, m_lexical, facet, limit);
        std::string text;
        m_makeText(text);
        Violation(m_name, text, facet, limit);
    }
    [[noreturn]] void Fail(const char* facet, std::int32_t limit) const {
        Fail(facet, std::to_string(limit));
    }

    void Pattern() const {
        if (m_facets.patterns.empty()) return;
        if (!m_lexical.empty()) return Pattern(m_lexical, internal::IsAllAscii(m_lexical));
        std::string text;
        m_makeText(text);
        Pattern(text, internal::IsAllAscii(text));
    }
    /// `text` is in UTF-8.
    void Pattern(std::string_view text, bool isAscii) const {
        for (std::size_t i = 0; i < m_facets.patterns.size(); ++i) {
            const CXsdRegex::Result result = m_facets.Regex(i).Match(text, isAscii);
            if (result == CXsdRegex::Result::NoMatch) Fail("pattern", m_facets.patterns[i]);
            if (result == CXsdRegex::Result::LimitExceeded)
                Fail("pattern", m_facets.patterns[i] + "] [the match takes too many steps");
        }
    }

    /// `count` is called only when a length is set.
    template <class Count>
    void Length(Count count) const {
        if (m_facets.length < 0 && m_facets.minLength < 0 && m_facets.maxLength < 0) return;
        const std::size_t length = count();
        const auto set = [](std::int32_t limit) { return limit >= 0; };
        const auto asSize = [](std::int32_t limit) { return static_cast<std::size_t>(limit); };
        if (set(m_facets.length) && length != asSize(m_facets.length)) Fail("length", m_facets.length);
        if (set(m_facets.minLength) && length < asSize(m_facets.minLength))
            Fail("minLength", m_facets.minLength);
        if (set(m_facets.maxLength) && length > asSize(m_facets.maxLength))
            Fail("maxLength", m_facets.maxLength);
    }

    /// `compare` gives a DTCompareResult; what can not be ordered is refused by every bound.
    template <class T, class Compare>
    void Bounds(const TypedFacets<T>& typed, Compare compare) const {
        if (typed.minInclusive) {
            const auto order = compare(*typed.minInclusive);
            if (order != CDateTime::DTCompare_Greater && order != CDateTime::DTCompare_Equal) {
                Fail("minInclusive", m_facets.minInclusive);
            }
        }
        if (typed.maxInclusive) {
            const auto order = compare(*typed.maxInclusive);
            if (order != CDateTime::DTCompare_Less && order != CDateTime::DTCompare_Equal) {
                Fail("maxInclusive", m_facets.maxInclusive);
            }
        }
        if (typed.minExclusive && compare(*typed.minExclusive) != CDateTime::DTCompare_Greater) {
            Fail("minExclusive", m_facets.minExclusive);
        }
        if (typed.maxExclusive && compare(*typed.maxExclusive) != CDateTime::DTCompare_Less) {
            Fail("maxExclusive", m_facets.maxExclusive);
        }
    }

    template <class T, class Value>
    void Enumeration(const TypedFacets<T>& typed, const Value& value) const {
        if (!typed.enumeration.empty() && !typed.enumeration.contains(value)) FailEnumeration();
    }

    [[noreturn]] void FailEnumeration() const {
        std::string values;
        for (const std::string& value : m_facets.enumeration) {
            if (!values.empty()) values += ", ";
            values += value;
            if (values.size() > kMaxShownValue) {
                values += ", ...";
                break;
            }
        }
        Fail("enumeration", values);
    }

private:
    const Facets& m_facets;
    std::string_view m_name;
    std::string_view m_lexical;
    MakeText m_makeText;
};

CDateTime::DTCompareResult FromSign(int order) {
    return order < 0 ? CDateTime::DTCompare_Less
                     : (order > 0 ? CDateTime::DTCompare_Greater : CDateTime::DTCompare_Equal);
}

// An ill-formed sequence of UTF-8 counts as the one character that it is replaced by.
std::size_t CountCharacters(std::string_view text) {
    if (internal::WellFormedUtf8Length(text) != text.size())
        return CountCharacters(internal::RepairUtf8(text));
    // All bytes but those that continue a character.
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

bool IsDatePart(ItemType type) {
    return type == ItemType_year || type == ItemType_month || type == ItemType_day;
}

// What a kind of bounded integers can hold.
struct IntegerRange {
    const char* least;
    const char* most;
};

const IntegerRange* RangeOf(ItemType type) {
    static constexpr IntegerRange kRanges[] = {
        {"-128", "127"},
        {"-32768", "32767"},
        {"-2147483648", "2147483647"},
        {"-9223372036854775808", "9223372036854775807"},
        {"0", "255"},
        {"0", "65535"},
        {"0", "4294967295"},
        {"0", "18446744073709551615"},
    };
    static_assert(ItemType_ui8 - ItemType_i1 + 1 == std::size(kRanges));
    return type >= ItemType_i1 && type <= ItemType_ui8 ? &kRanges[type - ItemType_i1] : nullptr;
}

// Bounds may lie outside of what the kind holds, but must leave something of it.
void CheckRange(const TypedFacets<CDecimal>& typed, const Facets& facets, std::string_view name,
                const IntegerRange& range) {
    const CDecimal least(range.least);
    const CDecimal most(range.most);
    const auto refuse = [&](const char* facet, const std::string& text) {
        BadFacet(name, std::string(facet) + " [" + text + "] leaves no value of the type.");
    };
    if (typed.minInclusive && *typed.minInclusive > most) refuse("minInclusive", facets.minInclusive);
    if (typed.minExclusive && *typed.minExclusive >= most) refuse("minExclusive", facets.minExclusive);
    if (typed.maxInclusive && *typed.maxInclusive < least) refuse("maxInclusive", facets.maxInclusive);
    if (typed.maxExclusive && *typed.maxExclusive <= least) refuse("maxExclusive", facets.maxExclusive);
}

// The form that the values of a kind of dates have; dt_none for another kind.
CDateTime::DTType FormOf(ItemType type) {
    switch (type) {
        case ItemType_yearMonth:
            return CDateTime::dt_gYearMonth;
        case ItemType_monthDay:
            return CDateTime::dt_gMonthDay;
        case ItemType_date:
            return CDateTime::dt_date;
        case ItemType_datetime:
            return CDateTime::dt_dateTime;
        case ItemType_time:
            return CDateTime::dt_time;
        default:
            return CDateTime::dt_none;
    }
}

}  // namespace

// --- construction -----------------------------------------------------------------------------------------

CPrimitiveRestrictions::CPrimitiveRestrictions() noexcept = default;
CPrimitiveRestrictions::CPrimitiveRestrictions(const CPrimitiveRestrictions& other) noexcept = default;
CPrimitiveRestrictions::CPrimitiveRestrictions(CPrimitiveRestrictions&& other) noexcept = default;
CPrimitiveRestrictions& CPrimitiveRestrictions::operator=(const CPrimitiveRestrictions& other) noexcept =
    default;
CPrimitiveRestrictions& CPrimitiveRestrictions::operator=(CPrimitiveRestrictions&& other) noexcept = default;
CPrimitiveRestrictions::~CPrimitiveRestrictions() = default;

CPrimitiveRestrictions::CPrimitiveRestrictions(const char* pattern, std::int32_t minLength,
                                               std::int32_t maxLength, const char* minInclusive,
                                               const char* maxInclusive, const char* minExclusive,
                                               const char* maxExclusive, std::int32_t length,
                                               std::int32_t totalDigits, std::int32_t fractionDigits,
                                               CWhitespaceUtils::WhitespaceRule rule, const char* enumeration)
    : m_rule(rule), m_hasPattern(pattern != nullptr && *pattern != '\0') {
    const std::string_view values = OrEmpty(enumeration);
    const bool anyText = !(
        std::string_view(OrEmpty(pattern)).empty() && std::string_view(OrEmpty(minInclusive)).empty() &&
        std::string_view(OrEmpty(maxInclusive)).empty() && std::string_view(OrEmpty(minExclusive)).empty() &&
        std::string_view(OrEmpty(maxExclusive)).empty() && values.empty());
    const bool anyNumber =
        minLength >= 0 || maxLength >= 0 || length >= 0 || totalDigits >= 0 || fractionDigits >= 0;
    if (!anyText && !anyNumber) return;
    auto facets = std::make_shared<Facets>();
    if (m_hasPattern) facets->patterns.emplace_back(pattern);
    facets->minLength = minLength;
    facets->maxLength = maxLength;
    facets->length = length;
    facets->minInclusive = OrEmpty(minInclusive);
    facets->maxInclusive = OrEmpty(maxInclusive);
    facets->minExclusive = OrEmpty(minExclusive);
    facets->maxExclusive = OrEmpty(maxExclusive);
    facets->totalDigits = totalDigits;
    facets->fractionDigits = fractionDigits;
    for (std::size_t begin = 0; !values.empty() && begin <= values.size();) {
        const std::size_t end = std::min(values.find('\n', begin), values.size());
        facets->enumeration.emplace_back(values.substr(begin, end - begin));
        begin = end + 1;
    }
    facets->rule = rule;
    m_facets = std::move(facets);
}

CPrimitiveRestrictions CPrimitiveRestrictions::WithPatterns(const char* const* patterns,
                                                            std::int32_t count) const {
    CPrimitiveRestrictions result(*this);
    if (count <= 0) return result;
    auto facets = m_facets == nullptr ? std::make_shared<Facets>() : m_facets->CopyOfTexts();
    facets->rule = m_rule;
    facets->patterns.insert(facets->patterns.end(), patterns, patterns + count);
    result.m_facets = std::move(facets);
    result.m_hasPattern = true;
    return result;
}

// --- checks -----------------------------------------------------------------------------------------------

void CPrimitiveRestrictions::Check(std::string_view name, ItemType type, const char* value) const {
    Check(name, type, std::string_view(OrEmpty(value)));
}

void CPrimitiveRestrictions::CheckText(std::string_view name, ItemType type, std::string_view value) const {
    const bool isValueKind = internal::VisitItemType(type, [&](auto traits) {
        using Traits = decltype(traits);
        if constexpr (internal::kIsText<Traits>) {
            CheckString(name, type, value);
        } else {
            // The space around a value is no part of what a pattern is matched against.
            const auto typed = Traits::FromString(value, kCollapse);
            std::string scratch;
            Check(name, type, typed, internal::ApplyRule(kCollapse, value, scratch));
        }
    });
    if (!isValueKind) CheckString(name, type, value);
}

// The value is its own text, also when it is empty. It is in the local code page.
void CPrimitiveRestrictions::CheckString(std::string_view name, ItemType type, std::string_view value) const {
    std::string scratch;
    if (type != ItemType_char) value = internal::ApplyRule(m_facets->rule, value, scratch);
    const Checker check(*m_facets, name, value, [](std::string&) {});
    const auto& typed = m_facets->Typed<std::string>(
        type == ItemType_char ? type : ItemType_string, name, [&](TypedFacets<std::string>& made) {
            CheckLengths(*m_facets, name);
            FillEnumeration(made, *m_facets, name, [&](const std::string& text) {
                std::string allowed = CWhitespaceUtils::ApplyRule(m_facets->rule, text);
                if (made.type == ItemType_char) CConversions::charFromString(allowed, kNone);
                return allowed;
            });
        });
    const bool isAscii = internal::IsAllAscii(value);
    const bool isUtf8 = isAscii || internal::IsLocalUtf8();
    const std::string converted = isUtf8 ? std::string() : internal::LocalToUtf8(value);
    const std::string_view characters = isUtf8 ? value : converted;
    check.Length([&] { return CountCharacters(characters); });
    check.Pattern(characters, isAscii);
    check.Enumeration(typed, value);
}

void CPrimitiveRestrictions::CheckBoolean(std::string_view name, bool value, std::string_view lexical) const {
    const Checker check(*m_facets, name, lexical,
                        [&](std::string& out) { CConversions::AppendBoolean(out, value); });
    const auto& typed = m_facets->Typed<bool>(ItemType_boolean, name, [&](TypedFacets<bool>& made) {
        FillEnumeration(made, *m_facets, name, [](const std::string& text) {
            return CConversions::booleanFromString(text, kCollapse);
        });
    });
    check.Pattern();
    check.Enumeration(typed, value);
}

void CPrimitiveRestrictions::CheckInt64(std::string_view name, ItemType type, std::int64_t value,
                                        std::string_view lexical) const {
    CheckDecimal(name, type, CDecimal(value), lexical);
}

void CPrimitiveRestrictions::CheckUInt64(std::string_view name, ItemType type, std::uint64_t value,
                                         std::string_view lexical) const {
    CheckDecimal(name, type, CDecimal(value), lexical);
}

void CPrimitiveRestrictions::CheckInteger(std::string_view name, ItemType type, const CBigInteger& value,
                                          std::string_view lexical) const {
    CheckDecimal(name, type, CDecimal(value), lexical);
}

void CPrimitiveRestrictions::CheckDecimal(std::string_view name, ItemType type, const CDecimal& value,
                                          std::string_view lexical) const {
    const Checker check(*m_facets, name, lexical, [&](std::string& out) {
        if (type == ItemType_month) {
            CConversions::AppendMonth(out, static_cast<std::uint8_t>(value.ToInt32()));
        } else if (type == ItemType_day) {
            CConversions::AppendDay(out, static_cast<std::uint8_t>(value.ToInt32()));
        } else {
            value.AppendTo(out);
        }
    });
    const bool isDatePart = IsDatePart(type);
    const IntegerRange* const range = RangeOf(type);
    if (!isDatePart && range == nullptr && type != ItemType_integer) type = ItemType_decimal;
    const auto compare = [](const CDecimal& a, const CDecimal& b) { return FromSign(a.CompareTo(b)); };
    const auto& typed = m_facets->Typed<CDecimal>(type, name, [&](TypedFacets<CDecimal>& made) {
        const auto parse = [type](const std::string& text) -> CDecimal {
            switch (type) {
                case ItemType_year:
                    return CConversions::yearFromString(text, kCollapse);
                case ItemType_month:
                    return CConversions::monthFromString(text, kCollapse);
                case ItemType_day:
                    return CConversions::dayFromString(text, kCollapse);
                default:
                    break;
            }
            CDecimal number = CConversions::decimalFromString(text, kCollapse);
            if (type != ItemType_decimal && number.GetFractionDigits() > 0)
                throw CKvInvalidValueException("The value [" + text + "] is no integer");
            return number;
        };
        if (!isDatePart) CheckDigits(*m_facets, name);
        FillBounds(made, *m_facets, name, parse, compare);
        if (range != nullptr) CheckRange(made, *m_facets, name, *range);
        FillEnumeration(made, *m_facets, name, [&](const std::string& text) {
            CDecimal number = parse(text);
            if (range != nullptr && (number < CDecimal(range->least) || number > CDecimal(range->most)))
                throw CKvInvalidValueException("The value [" + text + "] is out of range");
            return number;
        });
    });
    check.Pattern();
    if (!isDatePart) {
        if (m_facets->totalDigits >= 0 && value.GetTotalDigits() > m_facets->totalDigits) {
            check.Fail("totalDigits", m_facets->totalDigits);
        }
        if (m_facets->fractionDigits >= 0 && value.GetFractionDigits() > m_facets->fractionDigits) {
            check.Fail("fractionDigits", m_facets->fractionDigits);
        }
    }
    check.Bounds(typed, [&](const CDecimal& other) { return compare(value, other); });
    check.Enumeration(typed, value);
}

void CPrimitiveRestrictions::CheckDouble(std::string_view name, ItemType type, double value,
                                         std::string_view lexical) const {
    const bool isFloat = type == ItemType_r4;
    const Checker check(*m_facets, name, lexical, [&](std::string& out) {
        if (isFloat) {
            CConversions::AppendR4(out, static_cast<float>(value));
        } else {
            CConversions::AppendR8(out, value);
        }
    });
    const auto compare = [](double a, double b) {
        if (std::isnan(a) || std::isnan(b)) {
            return std::isnan(a) && std::isnan(b) ? CDateTime::DTCompare_Equal
                                                  : CDateTime::DTCompare_Indeterminate;
        }
        return FromSign(a < b ? -1 : (a > b ? 1 : 0));
    };
    // A bound of a float is a float, so that 0.1 does not exceed a bound of 0.1.
    const auto parse = [isFloat](const std::string& text) {
        return isFloat ? static_cast<double>(CConversions::r4FromString(text, kCollapse))
                       : CConversions::r8FromString(text, kCollapse);
    };
    const auto& typed =
        m_facets->Typed<double>(isFloat ? ItemType_r4 : ItemType_r8, name, [&](TypedFacets<double>& made) {
            FillBounds(made, *m_facets, name, parse, compare);
            FillEnumeration(made, *m_facets, name, parse);
        });
    check.Pattern();
    check.Bounds(typed, [&](double other) { return compare(value, other); });
    check.Enumeration(typed, value);
}

void CPrimitiveRestrictions::CheckDateTime(std::string_view name, ItemType type, const CDateTime& value,
                                           std::string_view lexical) const {
    const Checker check(*m_facets, name, lexical,
                        [&](std::string& out) { CConversions::AppendDateTime(out, value); });
    const auto compare = [](const CDateTime& a, const CDateTime& b) { return a.CompareTo(b); };
    const CDateTime::DTType form = FormOf(type);
    if (form == CDateTime::dt_none) type = ItemType_date;
    const auto& typed = m_facets->Typed<CDateTime>(type, name, [&](TypedFacets<CDateTime>& made) {
        const auto parse = [type, form](const std::string& text) {
            if (type == ItemType_datetime) return CConversions::datetimeFromString(text, kCollapse);
            if (type == ItemType_time) return CConversions::timeFromString(text, kCollapse);
            CDateTime bound = CConversions::dateFromString(text, kCollapse);
            if (form != CDateTime::dt_none && bound.GetType() != form) {
                throw CKvInvalidValueException("The value [" + text + "] is a " + bound.GetTypeAsString());
            }
            return bound;
        };
        FillBounds(made, *m_facets, name, parse, compare);
        FillEnumeration(made, *m_facets, name, parse);
    });
    check.Pattern();
    check.Bounds(typed, [&](const CDateTime& other) { return compare(value, other); });
    check.Enumeration(typed, value);
}

void CPrimitiveRestrictions::CheckDuration(std::string_view name, ItemType, const CDateTimeSpan& value,
                                           std::string_view lexical) const {
    const Checker check(*m_facets, name, lexical,
                        [&](std::string& out) { CConversions::AppendDuration(out, value); });
    const auto compare = [](const CDateTimeSpan& a, const CDateTimeSpan& b) { return a.CompareTo(b); };
    const auto parse = [](const std::string& text) {
        return CConversions::durationFromString(text, kCollapse);
    };
    const auto& typed =
        m_facets->Typed<CDateTimeSpan>(ItemType_duration, name, [&](TypedFacets<CDateTimeSpan>& made) {
            FillBounds(made, *m_facets, name, parse, compare);
            FillEnumeration(made, *m_facets, name, parse);
        });
    check.Pattern();
    check.Bounds(typed, [&](const CDateTimeSpan& other) { return compare(value, other); });
    check.Enumeration(typed, value);
}

void CPrimitiveRestrictions::CheckBinary(std::string_view name, ItemType type, const CBinaryData& value,
                                         std::string_view lexical) const {
    const bool isHex = type != ItemType_base64Binary;
    const Checker check(*m_facets, name, lexical, [&](std::string& out) {
        if (isHex) {
            CConversions::AppendHexBinary(out, value);
        } else {
            CConversions::AppendBase64Binary(out, value);
        }
    });
    const auto& typed = m_facets->Typed<CBinaryData>(
        isHex ? ItemType_hexBinary : ItemType_base64Binary, name, [&](TypedFacets<CBinaryData>& made) {
            CheckLengths(*m_facets, name);
            FillEnumeration(made, *m_facets, name, [isHex](const std::string& text) {
                if (isHex) return CConversions::hexBinaryFromString(text, kCollapse);
                CBinaryData allowed = CConversions::base64BinaryFromString(text, kCollapse);
                // Bad base64 reads as nothing.
                if (allowed.GetLength() == 0 && !CWhitespaceUtils::Collapse(text).empty())
                    throw CKvInvalidValueException("The value [" + text + "] is no base64");
                return allowed;
            });
        });
    check.Length([&] { return value.GetLength(); });
    check.Pattern();
    check.Enumeration(typed, value);
}

}  // namespace KvXmlLib16
