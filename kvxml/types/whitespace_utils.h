/// The whitespace facet of XSD types.
///
///     CWhitespaceUtils::Collapse("\t a  b \r\n") == "a b"
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/export.h"

namespace KvXmlLib16 {

/// Applies whitespace rules to text before it is parsed. Whitespace is space, tab, line feed and carriage
/// return, nothing else. All functions are static, keep no state and may run on any thread.
class KVXML_EXPORT CWhitespaceUtils {
public:
    enum WhitespaceRule : std::int32_t {
        WhitespaceRule_None = 0,      ///< text as given
        WhitespaceRule_Preserve = 1,  ///< line ends become one line feed
        WhitespaceRule_Replace = 2,   ///< every tab and line end becomes one space
        WhitespaceRule_Collapse = 3,  ///< inner runs become one space, outer whitespace is removed
    };

    /// Line ends (carriage return, with or without a line feed) become one line feed. The result ends at the
    /// first zero byte. A negative length counts as 0.
    static std::string Preserve(const char* text, int length);
    /// As above for a whole string; text without any carriage return is returned unchanged, zero bytes
    /// included.
    static std::string Preserve(std::string_view text);
    /// Tabs, line feeds and carriage returns become spaces; a carriage return and its line feed become one.
    static std::string Replace(std::string_view text);
    /// Leading and trailing whitespace goes, inner runs of whitespace become one space.
    static std::string Collapse(std::string_view text);
    /// Applies `rule`; CKvException "Unknown WhitespaceRule" for a value outside the enumeration.
    static std::string ApplyRule(WhitespaceRule rule, std::string_view text);
    /// As ApplyRule without copying where possible: the result is a view of `text` when the rule changes
    /// nothing or only cuts off the ends, otherwise of `scratch`, whose former content is lost.
    static std::string_view ApplyRuleView(WhitespaceRule rule, std::string_view text, std::string& scratch);
    /// True for space, tab, line feed and carriage return.
    static constexpr bool IsWhiteSpace(char c) noexcept {
        return c == ' ' || c == '\t' || c == '\n' || c == '\r';
    }
};

}  // namespace KvXmlLib16
