/// Where the other judges are known to differ from the recommendation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/oracle/judges.h"

namespace oracle {

/// Two verdicts on one schema or document.
struct CDifference {
    const char* judge;       ///< name of the other one
    std::uint64_t seed;      ///< of the schema
    std::uint64_t document;  ///< its number, from 1; 0: the difference is about the schema
    std::string schemaText;
    std::string documentText;
    CVerdict own;
    CVerdict other;
};

inline constexpr std::size_t kMostRules = 64;
/// The rule that explains the difference, by its number; -1 when there is none.
int FindRule(const CDifference& difference);
/// What the rule says and whom it is about; null beyond the last one.
const char* TextOfRule(std::size_t rule);

}  // namespace oracle
