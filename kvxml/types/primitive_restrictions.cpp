#include "kvxml/types/primitive_restrictions.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "kvxml/platform/internal/code_page.h"
#include "kvxml/runtime/exceptions.h"
#include "kvxml/types/conversions.h"
#include "kvxml/types/internal/xsd_regex.h"

namespace KvXmlLib16 {

namespace internal {

namespace {

// Bounds and enumeration as values of one type; read from the texts at the first check that needs them.
struct TypedFacetsBase {
    explicit TypedFacetsBase(ItemType itemType) : type(itemType) {}
    virtual ~TypedFacetsBase() = default;
    TypedFacetsBase(const TypedFacetsBase&) = delete;
    TypedFacetsBase& operator=(const TypedFacetsBase&) = delete;

    const ItemType type;
    const TypedFacetsBase* next = nullptr;
};

template <class T>
struct TypedFacets : TypedFacetsBase {
    using TypedFacetsBase::TypedFacetsBase;
    std::optional<T> minInclusive;
    std::optional<T> maxInclusive;
    std::optional<T> minExclusive;
    std::optional<T> maxExclusive;
    std::vector<T> enumeration;
};

}  // namespace

/// The state that copies of a CPrimitiveRestrictions share. What is mutable is set once, under the mutex.
struct Facets {
    ~Facets() {
        for (const TypedFacetsBase* typed = m_typed.load(); typed != nullptr;) {
            const TypedFacetsBase* const next = typed->next;
            delete typed;
            typed = next;
        }
    }

    const CXsdRegex& Regex() const {
        const CXsdRegex* regex = m_regex.load(std::memory_order_acquire);
        if (regex == nullptr) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_regexOwner == nullptr)
                m_regexOwner = CXsdRegex::Get(IsLocalUtf8() ? pattern : LocalToUtf8(pattern));
            regex = m_regexOwner.get();
            m_regex.store(regex, std::memory_order_release);
        }
        return *regex;
    }

    /// The kinds that share a T read different texts and are therefore kept apart. A kind has only one T.
    template <class T, class Parse>
    const TypedFacets<T>& Typed(ItemType type, Parse parse) const {
        if (const auto* const known = Find<T>(type)) return *known;
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (const auto* const known = Find<T>(type)) return *known;
        auto typed = std::make_unique<TypedFacets<T>>(type);
        if (!minInclusive.empty()) typed->minInclusive = parse(minInclusive);
        if (!maxInclusive.empty()) typed->maxInclusive = parse(maxInclusive);
        if (!minExclusive.empty()) typed->minExclusive = parse(minExclusive);
        if (!maxExclusive.empty()) typed->maxExclusive = parse(maxExclusive);
        for (const std::string& value : enumeration)
            typed->enumeration.push_back(parse(value));
        typed->next = m_typed.load(std::memory_order_relaxed);
        const TypedFacets<T>* const result = typed.release();
        m_typed.store(result, std::memory_order_release);
        return *result;
    }

    std::string pattern;
    std::int32_t minLength = CPrimitiveRestrictions::kNotSet;
    std::int32_t maxLength = CPrimitiveRestrictions::kNotSet;
    std::int32_t length = CPrimitiveRestrictions::kNotSet;
    std::string minInclusive;
    std::string maxInclusive;
    std::string minExclusive;
    std::string maxExclusive;
    std::int32_t totalDigits = CPrimitiveRestrictions::kNotSet;
    std::int32_t fractionDigits = CPrimitiveRestrictions::kNotSet;
    std::vector<std::string> enumeration;        // as given
    std::vector<std::string> sortedEnumeration;  // under the whitespace rule, for strings

private:
    template <class T>
    const TypedFacets<T>* Find(ItemType type) const {
        for (const TypedFacetsBase* typed = m_typed.load(std::memory_order_acquire); typed != nullptr;
             typed = typed->next) {
            if (typed->type == type) return static_cast<const TypedFacets<T>*>(typed);
        }
        return nullptr;
    }

    mutable std::mutex m_mutex;
    mutable std::shared_ptr<const CXsdRegex> m_regexOwner;
    mutable std::atomic<const CXsdRegex*> m_regex{nullptr};
    mutable std::atomic<const TypedFacetsBase*> m_typed{nullptr};
};

}  // namespace internal

using internal::CXsdRegex;
using internal::Facets;
using internal::TypedFacets;

namespace {

constexpr auto kCollapse = CWhitespaceUtils::WhitespaceRule_Collapse;
constexpr std::size_t kMaxShownValue = 1000;

const char* TextOf(const char* text) noexcept {
    return text != nullptr ? text : "";
}

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
        if (m_facets.pattern.empty()) return;
        if (!m_lexical.empty()) return Pattern(m_lexical);
        std::string text;
        m_makeText(text);
        Pattern(text);
    }
    /// `text` is in UTF-8.
    void Pattern(std::string_view text) const {
        if (m_facets.pattern.empty()) return;
        const CXsdRegex::Result result = m_facets.Regex().Match(text);
        if (result == CXsdRegex::Result::NoMatch) Fail("pattern", m_facets.pattern);
        if (result == CXsdRegex::Result::LimitExceeded) {
            Fail("pattern", m_facets.pattern + "] [the match takes too many steps");
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
    void BoundsAndEnumeration(const TypedFacets<T>& typed, Compare compare) const {
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
        if (!typed.enumeration.empty() &&
            std::none_of(typed.enumeration.begin(), typed.enumeration.end(),
                         [&](const T& allowed) { return compare(allowed) == CDateTime::DTCompare_Equal; })) {
            FailEnumeration();
        }
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

std::size_t CountCharacters(std::string_view text) {
    // All bytes of UTF-8 but those that continue a character.
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool IsDatePart(ItemType type) {
    return type == ItemType_year || type == ItemType_month || type == ItemType_day;
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
    const std::string_view values = TextOf(enumeration);
    const bool anyText =
        !(std::string_view(TextOf(pattern)).empty() && std::string_view(TextOf(minInclusive)).empty() &&
          std::string_view(TextOf(maxInclusive)).empty() && std::string_view(TextOf(minExclusive)).empty() &&
          std::string_view(TextOf(maxExclusive)).empty() && values.empty());
    const bool anyNumber =
        minLength >= 0 || maxLength >= 0 || length >= 0 || totalDigits >= 0 || fractionDigits >= 0;
    if (!anyText && !anyNumber) return;
    auto facets = std::make_shared<Facets>();
    facets->pattern = TextOf(pattern);
    facets->minLength = minLength;
    facets->maxLength = maxLength;
    facets->length = length;
    facets->minInclusive = TextOf(minInclusive);
    facets->maxInclusive = TextOf(maxInclusive);
    facets->minExclusive = TextOf(minExclusive);
    facets->maxExclusive = TextOf(maxExclusive);
    facets->totalDigits = totalDigits;
    facets->fractionDigits = fractionDigits;
    for (std::size_t begin = 0; !values.empty() && begin <= values.size();) {
        const std::size_t end = std::min(values.find('\n', begin), values.size());
        facets->enumeration.emplace_back(values.substr(begin, end - begin));
        facets->sortedEnumeration.push_back(CWhitespaceUtils::ApplyRule(rule, facets->enumeration.back()));
        begin = end + 1;
    }
    std::sort(facets->sortedEnumeration.begin(), facets->sortedEnumeration.end());
    m_facets = std::move(facets);
}

// --- checks -----------------------------------------------------------------------------------------------

void CPrimitiveRestrictions::CheckText(std::string_view name, ItemType type, std::string_view value) const {
    switch (type) {
        case ItemType_i1:
            return CheckInt64(name, type, CConversions::i1FromString(value, kCollapse), value);
        case ItemType_i2:
            return CheckInt64(name, type, CConversions::i2FromString(value, kCollapse), value);
        case ItemType_i4:
            return CheckInt64(name, type, CConversions::i4FromString(value, kCollapse), value);
        case ItemType_i8:
            return CheckInt64(name, type, CConversions::i8FromString(value, kCollapse), value);
        case ItemType_ui1:
            return CheckUInt64(name, type, CConversions::ui1FromString(value, kCollapse), value);
        case ItemType_ui2:
            return CheckUInt64(name, type, CConversions::ui2FromString(value, kCollapse), value);
        case ItemType_ui4:
            return CheckUInt64(name, type, CConversions::ui4FromString(value, kCollapse), value);
        case ItemType_ui8:
            return CheckUInt64(name, type, CConversions::ui8FromString(value, kCollapse), value);
        case ItemType_r4:
            return CheckDouble(name, type, static_cast<double>(CConversions::r4FromString(value, kCollapse)),
                               value);
        case ItemType_r8:
            return CheckDouble(name, type, CConversions::r8FromString(value, kCollapse), value);
        case ItemType_year:
            return CheckUInt64(name, type, CConversions::yearFromString(value, kCollapse), value);
        case ItemType_month:
            return CheckUInt64(name, type, CConversions::monthFromString(value, kCollapse), value);
        case ItemType_day:
            return CheckUInt64(name, type, CConversions::dayFromString(value, kCollapse), value);
        case ItemType_date:
        case ItemType_yearMonth:
        case ItemType_monthDay:
            return CheckDateTime(name, type, CConversions::dateFromString(value, kCollapse), value);
        case ItemType_datetime:
            return CheckDateTime(name, type, CConversions::datetimeFromString(value, kCollapse), value);
        case ItemType_time:
            return CheckDateTime(name, type, CConversions::timeFromString(value, kCollapse), value);
        case ItemType_duration:
            return CheckDuration(name, type, CConversions::durationFromString(value, kCollapse), value);
        case ItemType_decimal:
            return CheckDecimal(name, type, CConversions::decimalFromString(value, kCollapse), value);
        case ItemType_integer:
            return CheckInteger(name, type, CConversions::integerFromString(value, kCollapse), value);
        case ItemType_boolean:
            return CheckBoolean(name, CConversions::booleanFromString(value, kCollapse), value);
        case ItemType_hexBinary:
            return CheckBinary(name, type, CConversions::hexBinaryFromString(value, kCollapse), value);
        case ItemType_base64Binary:
            return CheckBinary(name, type, CConversions::base64BinaryFromString(value, kCollapse), value);
        default:
            break;
    }
    // The value is its own text, also when it is empty. It is in the local code page.
    const Checker check(*m_facets, name, value, [](std::string&) {});
    const bool isUtf8 = IsAscii(value) || internal::IsLocalUtf8();
    const std::string converted = isUtf8 ? std::string() : internal::LocalToUtf8(value);
    const std::string_view characters = isUtf8 ? value : converted;
    check.Length([&] { return CountCharacters(characters); });
    check.Pattern(characters);
    const std::vector<std::string>& allowed = m_facets->sortedEnumeration;
    if (!allowed.empty() &&
        !std::binary_search(allowed.begin(), allowed.end(), value,
                            [](std::string_view a, std::string_view b) { return a < b; })) {
        check.FailEnumeration();
    }
}

void CPrimitiveRestrictions::CheckBoolean(std::string_view name, bool value, std::string_view lexical) const {
    const Checker check(*m_facets, name, lexical,
                        [&](std::string& out) { CConversions::AppendBoolean(out, value); });
    check.Pattern();
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
    check.Pattern();
    if (!IsDatePart(type)) {
        type = ItemType_decimal;
        if (m_facets->totalDigits >= 0 && value.GetTotalDigits() > m_facets->totalDigits) {
            check.Fail("totalDigits", m_facets->totalDigits);
        }
        if (m_facets->fractionDigits >= 0 && value.GetFractionDigits() > m_facets->fractionDigits) {
            check.Fail("fractionDigits", m_facets->fractionDigits);
        }
    }
    const auto& typed = m_facets->Typed<CDecimal>(type, [type](const std::string& text) -> CDecimal {
        switch (type) {
            case ItemType_year:
                return CConversions::yearFromString(text, kCollapse);
            case ItemType_month:
                return CConversions::monthFromString(text, kCollapse);
            case ItemType_day:
                return CConversions::dayFromString(text, kCollapse);
            default:
                return CConversions::decimalFromString(text, kCollapse);
        }
    });
    check.BoundsAndEnumeration(typed,
                               [&](const CDecimal& other) { return FromSign(value.CompareTo(other)); });
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
    check.Pattern();
    // A bound of a float is a float, so that 0.1 does not exceed a bound of 0.1.
    const auto& typed =
        m_facets->Typed<double>(isFloat ? ItemType_r4 : ItemType_r8, [isFloat](const std::string& text) {
            return isFloat ? static_cast<double>(CConversions::r4FromString(text, kCollapse))
                           : CConversions::r8FromString(text, kCollapse);
        });
    check.BoundsAndEnumeration(typed, [&](double other) {
        if (std::isnan(value) || std::isnan(other)) {
            return std::isnan(value) && std::isnan(other) ? CDateTime::DTCompare_Equal
                                                          : CDateTime::DTCompare_Indeterminate;
        }
        return FromSign(value < other ? -1 : (value > other ? 1 : 0));
    });
}

void CPrimitiveRestrictions::CheckDateTime(std::string_view name, ItemType type, const CDateTime& value,
                                           std::string_view lexical) const {
    const Checker check(*m_facets, name, lexical,
                        [&](std::string& out) { CConversions::AppendDateTime(out, value); });
    check.Pattern();
    if (type != ItemType_datetime && type != ItemType_time) type = ItemType_date;
    const auto& typed = m_facets->Typed<CDateTime>(type, [type](const std::string& text) {
        if (type == ItemType_datetime) return CConversions::datetimeFromString(text, kCollapse);
        if (type == ItemType_time) return CConversions::timeFromString(text, kCollapse);
        return CConversions::dateFromString(text, kCollapse);
    });
    check.BoundsAndEnumeration(typed, [&](const CDateTime& other) { return value.CompareTo(other); });
}

void CPrimitiveRestrictions::CheckDuration(std::string_view name, ItemType, const CDateTimeSpan& value,
                                           std::string_view lexical) const {
    const Checker check(*m_facets, name, lexical,
                        [&](std::string& out) { CConversions::AppendDuration(out, value); });
    check.Pattern();
    const auto& typed = m_facets->Typed<CDateTimeSpan>(ItemType_duration, [](const std::string& text) {
        return CConversions::durationFromString(text, kCollapse);
    });
    check.BoundsAndEnumeration(typed, [&](const CDateTimeSpan& other) { return value.CompareTo(other); });
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
    check.Length([&] { return static_cast<std::size_t>(value.GetLength()); });
    check.Pattern();
    if (m_facets->enumeration.empty()) return;
    const auto parse = [isHex](const std::string& text) {
        return isHex ? CConversions::hexBinaryFromString(text, kCollapse)
                     : CConversions::base64BinaryFromString(text, kCollapse);
    };
    for (const std::string& text : m_facets->enumeration) {
        const CBinaryData allowed = parse(text);
        if (allowed.GetLength() == value.GetLength() &&
            (value.GetLength() == 0 ||
             std::memcmp(allowed.GetData(), value.GetData(), value.GetLength()) == 0)) {
            return;
        }
    }
    check.FailEnumeration();
}

}  // namespace KvXmlLib16
