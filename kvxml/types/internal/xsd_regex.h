/// Regular expressions of XML Schema (Part 2, Appendix F), run by PCRE2.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "kvxml/export.h"

namespace KvXmlLib16::internal {

/// A compiled pattern. Immutable; any number of threads may match with it at once.
class KVXML_EXPORT CXsdRegex {
public:
    enum class Result { Match, NoMatch, LimitExceeded };

    /// The compiled form of `pattern`, shared by everybody who asks for the same text while anybody holds it.
    /// CKvException "Invalid Regular Expression: %s Error: '%s'" for a bad pattern.
    static std::shared_ptr<const CXsdRegex> Get(const std::string& pattern);

    explicit CXsdRegex(std::string_view pattern);
    CXsdRegex(const CXsdRegex&) = delete;
    CXsdRegex& operator=(const CXsdRegex&) = delete;
    ~CXsdRegex();

    /// Whether the pattern matches the whole of `text`; ill-formed UTF-8 never matches. The time grows
    /// with the length of the text, not faster; a pattern that would have to keep track of more possibilities
    /// at a time than any reasonable one is given up. `isAscii`: the text is known to be ASCII, which is
    /// matched faster.
    Result Match(std::string_view text, bool isAscii) const;

private:
    const void* SideBySideCode() const;

    std::string m_pattern;
    void* m_code;
    bool m_isJit;
    mutable std::once_flag m_sideBySideOnce;
    mutable void* m_sideBySideCode = nullptr;  // made by the first text that needs it; may stay null
};

/// The same pattern in the language of PCRE2. CKvException as above. `forSideBySide`: for matching without
/// backtracking, in which "a+" would count its repetitions and each count be a possibility of its own.
std::string TranslateXsdPattern(std::string_view pattern, bool forSideBySide);

}  // namespace KvXmlLib16::internal
