#include "kvxml/fastinfoset/internal/reader_tables.h"

#include <utility>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/settings/fast_infoset_vocabulary.h"

namespace KvXmlLib16::internal {

namespace {

// Numbers of the first alphabet of a vocabulary: the standard's, and the one that a widespread
// implementation begins with.
constexpr unsigned kFirstAlphabet = 15;
constexpr unsigned kOtherFirstAlphabet = 32;

const CRestrictedAlphabet& BuiltInAlphabet(unsigned number) {
    static const CRestrictedAlphabet numeric("0123456789-+.E ");
    static const CRestrictedAlphabet dateAndTime("0123456789-:TZ ");
    return number == 0 ? numeric : dateAndTime;
}

}  // namespace

std::uint32_t CReaderStrings::GetNumber(std::string_view text) {
    const auto [at, isNew] = m_numbers.emplace(text, static_cast<std::uint32_t>(m_texts.size()));
    if (isNew) m_texts.push_back(text);
    return at->second;
}

CReaderTables::CReaderTables() {
    prefixes.entries.push_back(prefixes.GetNumber("xml"));
    namespaces.entries.push_back(namespaces.GetNumber(internal::kXmlNamespace));
}

std::string_view CReaderTables::Keep(const std::string& local) {
    if (IsLocalUtf8()) return local;
    return m_converted.emplace_back(LocalToUtf8(local));
}

void CReaderTables::Add(std::shared_ptr<const CFastInfosetVocabulary> vocabulary) {
    m_external = std::move(vocabulary);
    for (const std::string& characters : m_external->GetAlphabets())
        alphabets.emplace_back(Keep(characters));
    for (const std::string& text : m_external->GetPrefixes())
        AddToTable(prefixes.entries, prefixes.GetNumber(Keep(text)));
    for (const std::string& text : m_external->GetNamespaces())
        AddToTable(namespaces.entries, namespaces.GetNumber(Keep(text)));
    for (const std::string& text : m_external->GetLocalNames())
        AddToTable(localNames, Keep(text));
    for (const std::string& text : m_external->GetAttributeValues())
        AddToTable(values, CReaderText{Keep(text), false, false});
    for (const std::string& text : m_external->GetTexts())
        AddToTable(texts, CReaderText{Keep(text), false, false});
    otherNames = m_external->GetOtherNames().size();
    otherUris = m_external->GetOtherUris().size();
    otherTexts = m_external->GetOtherTexts().size();
}

const CRestrictedAlphabet* CReaderTables::FindAlphabet(unsigned number) {
    if (number < 2) return &BuiltInAlphabet(number);
    const auto at = [&](unsigned first) -> const CRestrictedAlphabet* {
        return number < first || number - first >= alphabets.size() ? nullptr : &alphabets[number - first];
    };
    // A document that uses a number below the other's first one has shown which numbers it means.
    if (number >= kFirstAlphabet && number < kOtherFirstAlphabet) m_hasStandardNumbers = true;
    const unsigned preferred = m_hasStandardNumbers ? kFirstAlphabet : kOtherFirstAlphabet;
    const CRestrictedAlphabet* const found = at(preferred);
    return found != nullptr ? found : at(kFirstAlphabet);
}

}  // namespace KvXmlLib16::internal
