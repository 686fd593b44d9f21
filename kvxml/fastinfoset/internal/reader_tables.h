/// The tables that a Fast Infoset document numbers its names and strings by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/fastinfoset/internal/binary_text.h"
#include "kvxml/xml/internal/xml_name_table.h"

namespace KvXmlLib16 {

class CFastInfosetVocabulary;

namespace internal {

/// A table ignores what is added to it when it is full.
inline constexpr std::size_t kMaxReaderTable = 1048576;

template <class T>
void AddToTable(std::vector<T>& table, const T& entry) {
    if (table.size() < kMaxReaderTable) table.push_back(entry);
}

/// Strings that entries refer to: equal ones have one number, though they may have several entries.
class CReaderStrings {
public:
    /// Number 0 is the empty string.
    CReaderStrings() { GetNumber({}); }

    /// The characters must outlive the tables.
    std::uint32_t GetNumber(std::string_view text);
    std::string_view GetText(std::uint32_t number) const noexcept { return m_texts[number]; }
    std::size_t GetCount() const noexcept { return m_texts.size(); }

    /// Numbers by index.
    std::vector<std::uint32_t> entries;

private:
    std::map<std::string_view, std::uint32_t> m_numbers;
    std::vector<std::string_view> m_texts;
};

/// A name of elements or attributes.
struct CReaderName {
    const CXmlNameEntry* name;
    std::uint32_t prefix;        ///< number; 0 for none
    std::uint32_t namespaceUri;  ///< number; 0 for none
};

/// A text of elements or a value of attributes.
struct CReaderText {
    std::string_view text;
    bool isShared;  ///< lies in the tree's shared characters, not in the document
    bool isBlank;   ///< blanks as between elements
};

/// All tables of one document. Of strings that no tree keeps only the number is kept.
struct CReaderTables {
    /// Numbers of what every document has as first entries.
    static constexpr std::uint32_t kXml = 1;

    CReaderTables();
    CReaderTables(const CReaderTables&) = delete;
    CReaderTables& operator=(const CReaderTables&) = delete;

    /// Adds the entries of an external vocabulary; names of elements and attributes are added by the caller,
    /// with what `Keep` returns.
    void Add(std::shared_ptr<const CFastInfosetVocabulary> vocabulary);
    /// The text in UTF-8, good as long as the tables.
    std::string_view Keep(const std::string& local);
    /// The alphabet with this number in documents; null when there is none.
    const CRestrictedAlphabet* FindAlphabet(unsigned number);

    CReaderStrings prefixes;
    CReaderStrings namespaces;
    std::vector<std::string_view> localNames;
    std::vector<CReaderText> values;
    std::vector<CReaderText> texts;
    std::vector<CReaderName> elementNames;
    std::vector<CReaderName> attributeNames;
    std::size_t otherNames = 0;
    std::size_t otherUris = 0;
    std::size_t otherTexts = 0;
    std::deque<CRestrictedAlphabet> alphabets;  ///< those of the vocabularies

private:
    std::shared_ptr<const CFastInfosetVocabulary> m_external;
    std::deque<std::string> m_converted;
    bool m_hasStandardNumbers = false;
};

}  // namespace internal
}  // namespace KvXmlLib16
