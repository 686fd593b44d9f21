/// Facets: what a schema demands of a primitive value beyond its type.
///
///     CPrimitiveRestrictions percent(nullptr, -1, -1, "0", "100", nullptr, nullptr, -1, -1, -1,
///                                    CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
///     percent.Check("Discount", ItemType_i4, 101);   // throws
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "kvxml/export.h"
#include "kvxml/types/item_type.h"
#include "kvxml/types/whitespace_utils.h"

namespace KvXmlLib16 {

class CBigInteger;
class CBinaryData;
class CDateTime;
class CDateTimeSpan;
class CDecimal;

namespace internal {
struct Facets;
}

/// The facets of one member. Immutable, so copies share one state and may be used by any number of threads.
///
/// Every check throws CKvInvalidValueException "Invalid Value for <name> [<value>]." followed by the facet
/// that is violated and its value. Facets that do not apply to a kind (a length of a number, a bound of a
/// string) are passed over.
///
/// The first check of a kind reads the facets that apply to it. When they make no sense, this and every later
/// check of the kind throws, whatever the value; construction never does:
/// - CKvException "Invalid Regular Expression: %s Error: '%s'" for a bad pattern, with the member's name in
///   the inner exception; "Unknown WhitespaceRule" for a bad rule;
/// - CKvInvalidParamException "Invalid Facet of <name>: ..." for a bound or enumeration value that
///   is no value of the kind, for facets that contradict each other as XML Schema has it (minLength above
///   maxLength, an inclusive bound at the exclusive one of the other side, fractionDigits above totalDigits,
///   ...), and for bounds beyond all that an integer kind holds. Bounds of integer kinds may lie outside of
///   the kind's own range otherwise; both bounds of one side may be set, and the stricter holds.
class KVXML_EXPORT CPrimitiveRestrictions {
public:
    /// Marks a length or digit count that is not set. Texts are not set when null or empty.
    static constexpr std::int32_t kNotSet = -1;

    /// No facet: every value passes.
    CPrimitiveRestrictions() noexcept;
    /// All texts are in the local code page, as the values are.
    ///
    /// `pattern`: a regular expression of XML Schema that the whole text must match; alternative patterns of
    ///     one derivation step are joined by "|". Repetitions may be up to 10,000,000 ("a{3,10000000}"); a
    ///     larger upper number is no bound. A match that would have to keep track of very many possibilities
    ///     at once is refused.
    /// `minLength`, `maxLength`, `length`: characters of text, octets of binary values.
    /// Bounds: lexical values of the member's type, compared by the order of that type; what can not be
    ///     ordered (NaN, some dates and durations) violates every bound. Strings have no order.
    /// `enumeration`: lexical values with line feeds between them, compared as values ("1.0" allows 1.00, "1"
    ///     allows true). Every line feed separates two values: "a\n" is "a" and the empty value.
    /// `totalDigits`, `fractionDigits`: of decimals and integers; zeros without significance do not count.
    /// `rule`: applied to strings and their enumeration before anything is checked, and kept for
    ///     GetWhitespaceRule; a rule alone is no facet.
    CPrimitiveRestrictions(const char* pattern, std::int32_t minLength, std::int32_t maxLength,
                           const char* minInclusive, const char* maxInclusive, const char* minExclusive,
                           const char* maxExclusive, std::int32_t length, std::int32_t totalDigits,
                           std::int32_t fractionDigits, CWhitespaceUtils::WhitespaceRule rule,
                           const char* enumeration);
    /// The same facets and patterns besides, each of which must match too.
    CPrimitiveRestrictions WithPatterns(const char* const* patterns, std::int32_t count) const;
    CPrimitiveRestrictions(const CPrimitiveRestrictions& other) noexcept;
    CPrimitiveRestrictions(CPrimitiveRestrictions&& other) noexcept;
    CPrimitiveRestrictions& operator=(const CPrimitiveRestrictions& other) noexcept;
    CPrimitiveRestrictions& operator=(CPrimitiveRestrictions&& other) noexcept;
    ~CPrimitiveRestrictions();

    /// True when there is no facet to check.
    bool IsEmpty() const noexcept { return m_facets == nullptr; }
    /// True when values are matched against a pattern, for which their lexical text matters.
    bool HasPattern() const noexcept { return m_hasPattern; }
    CWhitespaceUtils::WhitespaceRule GetWhitespaceRule() const noexcept { return m_rule; }

    /// Checks `value`, which is of kind `type` and belongs to the member `name`. The text of a kind other
    /// than string, char and unknown is converted first, with the errors of its conversion, and stripped of
    /// whitespace for the pattern.
    void Check(std::string_view name, ItemType type, std::string_view value) const {
        if (!IsEmpty()) CheckText(name, type, value);
    }
    void Check(std::string_view name, ItemType type, const std::string& value) const {
        Check(name, type, std::string_view(value));
    }
    void Check(std::string_view name, ItemType type, const char* value) const;
    /// The typed forms: no text is made unless there is a pattern, or an error to report. A pattern is
    /// matched against `lexical`, the text that the value was read from or will be written as; when that is
    /// empty, against the text form that CConversions gives the value.
    ///
    /// Any integer type; year, month and day kinds are numbers; bool is checked as "true" or "false".
    template <class T, std::enable_if_t<std::is_arithmetic_v<T>, int> = 0>
    void Check(std::string_view name, ItemType type, T value, std::string_view lexical = {}) const {
        if (IsEmpty()) return;
        if constexpr (std::is_same_v<T, bool>) {
            CheckBoolean(name, value, lexical);
        } else if constexpr (std::is_floating_point_v<T>) {
            CheckDouble(name, type, static_cast<double>(value), lexical);
        } else if constexpr (std::is_signed_v<T>) {
            CheckInt64(name, type, static_cast<std::int64_t>(value), lexical);
        } else {
            CheckUInt64(name, type, static_cast<std::uint64_t>(value), lexical);
        }
    }
    void Check(std::string_view name, ItemType type, const CDecimal& value,
               std::string_view lexical = {}) const {
        if (!IsEmpty()) CheckDecimal(name, type, value, lexical);
    }
    void Check(std::string_view name, ItemType type, const CBigInteger& value,
               std::string_view lexical = {}) const {
        if (!IsEmpty()) CheckInteger(name, type, value, lexical);
    }
    void Check(std::string_view name, ItemType type, const CDateTime& value,
               std::string_view lexical = {}) const {
        if (!IsEmpty()) CheckDateTime(name, type, value, lexical);
    }
    void Check(std::string_view name, ItemType type, const CDateTimeSpan& value,
               std::string_view lexical = {}) const {
        if (!IsEmpty()) CheckDuration(name, type, value, lexical);
    }
    void Check(std::string_view name, ItemType type, const CBinaryData& value,
               std::string_view lexical = {}) const {
        if (!IsEmpty()) CheckBinary(name, type, value, lexical);
    }

private:
    void CheckText(std::string_view name, ItemType type, std::string_view value) const;
    void CheckString(std::string_view name, ItemType type, std::string_view value) const;
    void CheckBoolean(std::string_view name, bool value, std::string_view lexical) const;
    void CheckInt64(std::string_view name, ItemType type, std::int64_t value, std::string_view lexical) const;
    void CheckUInt64(std::string_view name, ItemType type, std::uint64_t value,
                     std::string_view lexical) const;
    void CheckDouble(std::string_view name, ItemType type, double value, std::string_view lexical) const;
    void CheckDecimal(std::string_view name, ItemType type, const CDecimal& value,
                      std::string_view lexical) const;
    void CheckInteger(std::string_view name, ItemType type, const CBigInteger& value,
                      std::string_view lexical) const;
    void CheckDateTime(std::string_view name, ItemType type, const CDateTime& value,
                       std::string_view lexical) const;
    void CheckDuration(std::string_view name, ItemType type, const CDateTimeSpan& value,
                       std::string_view lexical) const;
    void CheckBinary(std::string_view name, ItemType type, const CBinaryData& value,
                     std::string_view lexical) const;

    std::shared_ptr<const internal::Facets> m_facets;
    CWhitespaceUtils::WhitespaceRule m_rule = CWhitespaceUtils::WhitespaceRule_None;
    bool m_hasPattern = false;
};

}  // namespace KvXmlLib16
