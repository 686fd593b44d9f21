#include "kvxml/schema/reader/internal/attribute_form.h"

#include <algorithm>
#include <initializer_list>

#include "kvxml/base/internal/ascii.h"
#include "kvxml/schema/datatypes/internal/lexical.h"
#include "kvxml/xml/internal/xml_name_check.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

std::string_view Trimmed(std::string_view text) noexcept {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool IsNcName(std::string_view text) noexcept {
    return IsXmlName(text, false);
}

bool IsQName(std::string_view text) noexcept {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return IsNcName(text);
    return IsNcName(text.substr(0, colon)) && IsNcName(text.substr(colon + 1));
}

bool IsOneOf(std::string_view text, std::initializer_list<std::string_view> words) noexcept {
    return std::find(words.begin(), words.end(), text) != words.end();
}

/// Whether all words of the list pass.
template <class Test>
bool AllWords(std::string_view list, Test test) {
    while (true) {
        const std::size_t first = list.find_first_not_of(kBlanks);
        if (first == std::string_view::npos) return true;
        list.remove_prefix(first);
        const std::string_view word = list.substr(0, list.find_first_of(kBlanks));
        if (!test(word)) return false;
        list.remove_prefix(word.size());
    }
}

bool IsSetOf(std::string_view text, std::initializer_list<std::string_view> words) noexcept {
    return text == "#all" || AllWords(text, [&](std::string_view word) { return IsOneOf(word, words); });
}

/// The digits of a nonNegativeInteger without leading zeros, "0" for zero; empty when it is none.
std::string_view DigitsOf(std::string_view text) noexcept {
    const bool isNegative = text.substr(0, 1) == "-";
    if (isNegative || text.substr(0, 1) == "+") text.remove_prefix(1);
    if (text.empty() || !std::all_of(text.begin(), text.end(), [](char c) { return IsDigit(c); })) return {};
    while (text.size() > 1 && text.front() == '0')
        text.remove_prefix(1);
    return isNegative && text != "0" ? std::string_view() : text;
}

bool IsNamespaceList(std::string_view text) noexcept {
    if (text == "##any" || text == "##other") return true;
    return AllWords(text, [](std::string_view word) {
        return word.substr(0, 2) == "##" ? IsOneOf(word, {"##targetNamespace", "##local"}) : IsAnyUri(word);
    });
}

}  // namespace

bool HasForm(std::string_view text, AttributeForm form) noexcept {
    text = Trimmed(text);
    switch (form) {
        case AttributeForm::Text:
            return true;
        case AttributeForm::Id:
        case AttributeForm::NcName:
            return IsNcName(text);
        case AttributeForm::QName:
            return IsQName(text);
        case AttributeForm::QNames:
            return AllWords(text, IsQName);
        case AttributeForm::AnyUri:
            return IsAnyUri(text);
        case AttributeForm::TargetNamespace:
            return !text.empty() && IsAnyUri(text);
        case AttributeForm::Boolean:
            return IsOneOf(text, {"true", "false", "1", "0"});
        case AttributeForm::Count:
            return !DigitsOf(text).empty();
        case AttributeForm::CountOrUnbounded:
            return text == "unbounded" || !DigitsOf(text).empty();
        case AttributeForm::ZeroOrOne:
            return IsOneOf(DigitsOf(text), {"0", "1"});
        case AttributeForm::One:
            return DigitsOf(text) == "1";
        case AttributeForm::Qualification:
            return IsOneOf(text, {"qualified", "unqualified"});
        case AttributeForm::Use:
            return IsOneOf(text, {"optional", "required", "prohibited"});
        case AttributeForm::ProcessContents:
            return IsOneOf(text, {"strict", "lax", "skip"});
        case AttributeForm::NamespaceList:
            return IsNamespaceList(text);
        case AttributeForm::BlockSet:
            return IsSetOf(text, {"extension", "restriction", "substitution"});
        case AttributeForm::DerivationSet:
            return IsSetOf(text, {"extension", "restriction"});
        case AttributeForm::FullDerivationSet:
            return IsSetOf(text, {"extension", "restriction", "list", "union"});
        case AttributeForm::SimpleDerivationSet:
            return IsSetOf(text, {"restriction", "list", "union"});
        case AttributeForm::Language:
            return IsLanguage(text);
        case AttributeForm::Space:
            return IsOneOf(text, {"default", "preserve"});
    }
    return true;
}

std::string_view DescriptionOf(AttributeForm form) noexcept {
    switch (form) {
        case AttributeForm::Text:
            break;
        case AttributeForm::Id:
        case AttributeForm::NcName:
            return "a name without colon";
        case AttributeForm::QName:
            return "a name, with or without prefix";
        case AttributeForm::QNames:
            return "names, with or without prefix, with blanks between them";
        case AttributeForm::AnyUri:
            return "a URI reference";
        case AttributeForm::TargetNamespace:
            return "a URI reference that is not empty";
        case AttributeForm::Boolean:
            return "true, false, 1 or 0";
        case AttributeForm::Count:
            return "a whole number, 0 or greater";
        case AttributeForm::CountOrUnbounded:
            return "a whole number, 0 or greater, or unbounded";
        case AttributeForm::ZeroOrOne:
            return "0 or 1";
        case AttributeForm::One:
            return "1";
        case AttributeForm::Qualification:
            return "qualified or unqualified";
        case AttributeForm::Use:
            return "optional, required or prohibited";
        case AttributeForm::ProcessContents:
            return "strict, lax or skip";
        case AttributeForm::NamespaceList:
            return "##any, ##other, or a list of URI references, ##targetNamespace and ##local";
        case AttributeForm::BlockSet:
            return "#all, or a list of extension, restriction and substitution";
        case AttributeForm::DerivationSet:
            return "#all, or a list of extension and restriction";
        case AttributeForm::FullDerivationSet:
            return "#all, or a list of extension, restriction, list and union";
        case AttributeForm::SimpleDerivationSet:
            return "#all, or a list of restriction, list and union";
        case AttributeForm::Language:
            return "a language such as en-US";
        case AttributeForm::Space:
            return "default or preserve";
    }
    return {};
}

}  // namespace KvXmlLib16::internal
