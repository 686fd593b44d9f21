/// Schemas from a seed: most are valid, all are close to it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/oracle/random_numbers.h"

namespace oracle {

/// What the texts of a built-in type may look like, and which facets are put on it.
struct CBuiltIn {
    enum class Facets { None, Length, Digits, Order };
    const char* name;  ///< without prefix
    Facets facets;
    std::vector<const char*> samples;  ///< the last ones are not all valid
};
const std::vector<CBuiltIn>& BuiltIns();
/// Texts of all types, one of them at random.
const char* RandomText(CRandom& random);
/// A text for the built-in type of the name; any text when there is no such type.
const char* RandomText(CRandom& random, std::string_view builtIn);

inline constexpr const char* kTarget = "urn:t";

/// The text of a schema with the target namespace kTarget (or none), whose document element is `root`.
std::string RandomSchema(CRandom& random);

}  // namespace oracle
