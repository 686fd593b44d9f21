/// The facets of all steps of a simple type, compiled.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "kvxml/schema/datatypes/internal/parsed_value.h"
#include "kvxml/schema/datatypes/internal/simple_type_checker.h"
#include "kvxml/types/internal/xsd_regex.h"

namespace KvXmlLib16::internal {

/// A bound: the text that its parsed form looks into.
struct CBound {
    std::string text;
    CParsedValue value;
};

/// The facets in force. Copied from the base, then narrowed by each restriction.
struct CFacetSet {
    WhiteSpace whiteSpace = WhiteSpace::Preserve;
    std::optional<std::uint64_t> length;
    std::optional<std::uint64_t> minLength;
    std::optional<std::uint64_t> maxLength;
    std::optional<std::uint64_t> totalDigits;
    std::optional<std::uint64_t> fractionDigits;
    std::shared_ptr<const CBound> minInclusive;
    std::shared_ptr<const CBound> maxInclusive;
    std::shared_ptr<const CBound> minExclusive;
    std::shared_ptr<const CBound> maxExclusive;
    /// A step for each restriction that has patterns; one of its alternatives must match.
    std::vector<std::vector<std::shared_ptr<const CXsdRegex>>> patterns;
    /// Keys of the values; null: any.
    std::shared_ptr<const std::unordered_set<std::string>> enumeration;
    std::uint32_t fixed = 0;  ///< bits by FacetKind

    bool IsFixed(FacetKind kind) const noexcept { return (fixed >> static_cast<unsigned>(kind) & 1) != 0; }
};

/// Applies the own facets of `type` to `facets`, which are those of its base; `base` judges the base's
/// values. Reports what is wrong (Part 2, 4.3, and 4.1.5 for what applies to what); wrong facets are left
/// out.
void AddFacets(const CSimpleTypeDefinition& type, const CSimpleTypeChecker& base, CFacetSet& facets,
               IFacetReport& report);

/// The facet that is violated, as "cvc-maxLength-valid"; null when none is. `text` is the value's, after
/// whitespace was treated; a list's `length` is that of its items.
const char* CheckLengths(const CFacetSet& facets, std::size_t length) noexcept;
const char* CheckPatterns(const CFacetSet& facets, std::string_view text);
const char* CheckBounds(const CFacetSet& facets, const CParsedValue& value) noexcept;

}  // namespace KvXmlLib16::internal
