/// The facets of one member and what is made of them at the first check.
#pragma once

#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/date_time.h"
#include "kvxml/types/internal/xsd_regex.h"
#include "kvxml/types/item_type.h"
#include "kvxml/types/primitive_restrictions.h"
#include "kvxml/types/whitespace_utils.h"

namespace KvXmlLib16::internal {

/// The hash of a value that enumerations list: equal values have equal ones. Texts are found by views of
/// them.
struct AllowedHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>()(text);
    }
    std::size_t operator()(bool value) const noexcept { return value ? 1 : 0; }
    std::size_t operator()(double value) const noexcept {
        return std::isnan(value) ? 0 : std::hash<double>()(value);
    }
    template <class T>
    auto operator()(const T& value) const noexcept -> decltype(value.GetHash()) {
        return value.GetHash();
    }
};

struct AllowedEqual {
    using is_transparent = void;
    template <class A, class B>
    bool operator()(const A& a, const B& b) const noexcept {
        if constexpr (std::is_floating_point_v<A>) return a == b || (std::isnan(a) && std::isnan(b));
        return a == b;
    }
};

// Bounds and enumeration as values of one kind; made, and all facets of the kind checked against each other,
// by the first check of a value.
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
    std::unordered_set<T, AllowedHash, AllowedEqual> enumeration;
};

/// The state that copies of a CPrimitiveRestrictions share. What is mutable is set once, under the mutex.
struct Facets {
    ~Facets();

    /// After Typed.
    const CXsdRegex& Regex(std::size_t index) const { return *m_regexes[index]; }
    /// The same facets, of which nothing is made yet.
    std::shared_ptr<Facets> CopyOfTexts() const;

    /// `fill` reads the texts and refuses facets that make no sense. A kind has only one T.
    template <class T, class Fill>
    const TypedFacets<T>& Typed(ItemType type, std::string_view name, Fill fill) const {
        if (const auto* const known = Find<T>(type)) return *known;
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (const auto* const known = Find<T>(type)) return *known;
        CWhitespaceUtils::ApplyRule(rule, {});  // refuses a value that is no rule
        if (m_regexes.size() < patterns.size()) m_regexes = Compile(name);
        auto typed = std::make_unique<TypedFacets<T>>(type);
        fill(*typed);
        typed->next = m_typed.load(std::memory_order_relaxed);
        const TypedFacets<T>* const result = typed.release();
        m_typed.store(result, std::memory_order_release);
        return *result;
    }

    std::vector<std::string> patterns;  // each must match
    std::int32_t minLength = CPrimitiveRestrictions::kNotSet;
    std::int32_t maxLength = CPrimitiveRestrictions::kNotSet;
    std::int32_t length = CPrimitiveRestrictions::kNotSet;
    std::string minInclusive;
    std::string maxInclusive;
    std::string minExclusive;
    std::string maxExclusive;
    std::int32_t totalDigits = CPrimitiveRestrictions::kNotSet;
    std::int32_t fractionDigits = CPrimitiveRestrictions::kNotSet;
    std::vector<std::string> enumeration;  // as given
    CWhitespaceUtils::WhitespaceRule rule = CWhitespaceUtils::WhitespaceRule_None;

private:
    template <class T>
    const TypedFacets<T>* Find(ItemType type) const {
        for (const TypedFacetsBase* typed = m_typed.load(std::memory_order_acquire); typed != nullptr;
             typed = typed->next) {
            if (typed->type == type) return static_cast<const TypedFacets<T>*>(typed);
        }
        return nullptr;
    }

    std::vector<std::shared_ptr<const CXsdRegex>> Compile(std::string_view name) const;

    mutable std::mutex m_mutex;
    mutable std::vector<std::shared_ptr<const CXsdRegex>> m_regexes;
    mutable std::atomic<const TypedFacetsBase*> m_typed{nullptr};
};

// --- facets that make no sense ----------------------------------------------------------------------------
//
// CKvInvalidParamException "Invalid Facet of <name>: ..." tells which.

[[noreturn]] void BadFacet(std::string_view name, const std::string& what);
[[noreturn]] void Contradiction(std::string_view name, const char* facet, const std::string& value,
                                const char* other, const std::string& otherValue);
void CheckLengths(const Facets& facets, std::string_view name);
void CheckDigits(const Facets& facets, std::string_view name);

// `parse` throws for a text that is no value.
template <class T, class Parse>
T ParseFacet(std::string_view name, const char* facet, const std::string& text, Parse parse) {
    try {
        return parse(text);
    } catch (const CKvException& e) {
        throw CKvInvalidParamException("Invalid Facet of " + std::string(name) + ": " + facet + " [" + text +
                                           "] is no value of the type.",
                                       e);
    }
}

template <class T, class Parse>
void FillEnumeration(TypedFacets<T>& typed, const Facets& facets, std::string_view name, Parse parse) {
    for (const std::string& value : facets.enumeration)
        typed.enumeration.insert(ParseFacet<T>(name, "enumeration", value, parse));
}

// `compare` gives the DTCompareResult of two values. Bounds whose order is not certain pass.
template <class T, class Parse, class Compare>
void FillBounds(TypedFacets<T>& typed, const Facets& facets, std::string_view name, Parse parse,
                Compare compare) {
    const auto fill = [&](std::optional<T>& bound, const char* facet, const std::string& text) {
        if (!text.empty()) bound = ParseFacet<T>(name, facet, text, parse);
    };
    fill(typed.minInclusive, "minInclusive", facets.minInclusive);
    fill(typed.maxInclusive, "maxInclusive", facets.maxInclusive);
    fill(typed.minExclusive, "minExclusive", facets.minExclusive);
    fill(typed.maxExclusive, "maxExclusive", facets.maxExclusive);
    const auto check = [&](const std::optional<T>& least, const char* facet, const std::string& text,
                           const std::optional<T>& most, const char* other, const std::string& otherText,
                           bool equalIsBad) {
        if (!least || !most) return;
        const CDateTime::DTCompareResult order = compare(*least, *most);
        if (order == CDateTime::DTCompare_Greater || (equalIsBad && order == CDateTime::DTCompare_Equal)) {
            Contradiction(name, facet, text, other, otherText);
        }
    };
    // Two exclusive bounds may be equal, as XML Schema has it.
    check(typed.minInclusive, "minInclusive", facets.minInclusive, typed.maxInclusive, "maxInclusive",
          facets.maxInclusive, false);
    check(typed.minInclusive, "minInclusive", facets.minInclusive, typed.maxExclusive, "maxExclusive",
          facets.maxExclusive, true);
    check(typed.minExclusive, "minExclusive", facets.minExclusive, typed.maxInclusive, "maxInclusive",
          facets.maxInclusive, true);
    check(typed.minExclusive, "minExclusive", facets.minExclusive, typed.maxExclusive, "maxExclusive",
          facets.maxExclusive, false);
}

}  // namespace KvXmlLib16::internal
