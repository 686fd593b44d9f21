/// Where the other judges are known to differ from the recommendation.
#pragma once

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

/// What explains the difference; null when nothing does.
const char* FindKnown(const CDifference& difference);

}  // namespace oracle
