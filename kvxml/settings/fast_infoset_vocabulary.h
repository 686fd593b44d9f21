/// Names and strings that both sides of an exchange of Fast Infoset documents know beforehand.
///
///     auto vocabulary = std::make_shared<CFastInfosetVocabulary>("urn:example:vocabulary");
///     vocabulary->AddElementName("o", "urn:example:orders", "order");
///     vocabulary->AddText("EUR");
///     context.GetFIContext().SetExternalVocabulary(vocabulary);
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kvxml/export.h"

namespace KvXmlLib16 {

/// The content of an external vocabulary (ITU-T X.891): tables that precede those of a document which names
/// the vocabulary by its URI. Entries are numbered in the order in which they are added, so both sides add
/// the same ones in the same order. Nothing changes any more once a context has it.
class KVXML_EXPORT CFastInfosetVocabulary {
public:
    /// A name, as its parts; prefix and namespace may be empty, the prefix must be where the namespace is.
    struct Name {
        std::string prefix;
        std::string namespaceUri;
        std::string localName;
    };

    /// `uri` names the vocabulary in documents; CKvInvalidParamException for an empty one.
    explicit CFastInfosetVocabulary(std::string_view uri);
    CFastInfosetVocabulary(const CFastInfosetVocabulary& other);
    CFastInfosetVocabulary& operator=(const CFastInfosetVocabulary& other);
    ~CFastInfosetVocabulary();

    /// @name Adding
    /// What is there already is not added again. CKvInvalidParamException for an empty text, and for a name
    /// with a prefix but no namespace.
    /// @{

    void AddPrefix(std::string_view prefix);
    void AddNamespace(std::string_view uri);
    void AddLocalName(std::string_view name);
    /// A value of attributes.
    void AddAttributeValue(std::string_view value);
    /// A text of elements.
    void AddText(std::string_view text);
    /// The characters of a restricted alphabet. Read, but not used for writing.
    void AddAlphabet(std::string_view characters);
    /// Targets of processing instructions, names of entities and notations. These and the next two tables
    /// are only counted in reading, since trees keep nothing of them.
    void AddOtherName(std::string_view name);
    /// Identifiers of entities, notations and document types.
    void AddOtherUri(std::string_view uri);
    /// Texts of comments and processing instructions.
    void AddOtherText(std::string_view text);
    /// A name of elements; its parts are added to their own tables as well.
    void AddElementName(std::string_view prefix, std::string_view namespaceUri, std::string_view localName);
    /// A name of attributes, likewise.
    void AddAttributeName(std::string_view prefix, std::string_view namespaceUri, std::string_view localName);

    /// @}
    /// @name What is in it
    /// Without the entries that every document has (the prefix "xml" and its namespace).
    /// @{

    const std::string& GetUri() const noexcept { return m_uri; }
    const std::vector<std::string>& GetPrefixes() const noexcept { return m_prefixes; }
    const std::vector<std::string>& GetNamespaces() const noexcept { return m_namespaces; }
    const std::vector<std::string>& GetLocalNames() const noexcept { return m_localNames; }
    const std::vector<std::string>& GetAttributeValues() const noexcept { return m_attributeValues; }
    const std::vector<std::string>& GetTexts() const noexcept { return m_texts; }
    const std::vector<std::string>& GetAlphabets() const noexcept { return m_alphabets; }
    const std::vector<std::string>& GetOtherNames() const noexcept { return m_otherNames; }
    const std::vector<std::string>& GetOtherUris() const noexcept { return m_otherUris; }
    const std::vector<std::string>& GetOtherTexts() const noexcept { return m_otherTexts; }
    const std::vector<Name>& GetElementNames() const noexcept { return m_elementNames; }
    const std::vector<Name>& GetAttributeNames() const noexcept { return m_attributeNames; }

    /// @}

private:
    void AddName(std::vector<Name>& names, std::string_view prefix, std::string_view namespaceUri,
                 std::string_view localName);

    std::string m_uri;
    std::vector<std::string> m_prefixes;
    std::vector<std::string> m_namespaces;
    std::vector<std::string> m_localNames;
    std::vector<std::string> m_attributeValues;
    std::vector<std::string> m_texts;
    std::vector<std::string> m_alphabets;
    std::vector<std::string> m_otherNames;
    std::vector<std::string> m_otherUris;
    std::vector<std::string> m_otherTexts;
    std::vector<Name> m_elementNames;
    std::vector<Name> m_attributeNames;
};

}  // namespace KvXmlLib16
