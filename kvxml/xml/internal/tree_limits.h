/// Limits on what is read into a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {

/// Thrown while a tree is built; readers turn it into an error that says where.
struct CTreeLimitPassed {
    const char* format;
    std::uint64_t limit;

    std::string Message() const { return FormatString(format, static_cast<unsigned long long>(limit)); }
};

constexpr const char* kTooDeep = "elements are nested deeper than the limit of %llu";

/// What entities, default attributes and table entries may add to a document is any amount up to the
/// context's limit, and beyond it so many times what was read.
constexpr std::uint64_t kMaxExpansionRatio = 100;

/// A limit as a number to compare with: none is the largest one.
template <class Number>
constexpr Number OrUnlimited(Number limit) noexcept {
    return limit == 0 ? std::numeric_limits<Number>::max() : limit;
}

}  // namespace KvXmlLib16::internal
