#include "kvxml/settings/fast_infoset_vocabulary.h"

#include <algorithm>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"

namespace KvXmlLib16 {

namespace {

void AddTo(std::vector<std::string>& table, std::string_view text) {
    if (text.empty()) throw CKvInvalidParamException("An entry of a vocabulary may not be empty");
    if (std::find(table.begin(), table.end(), text) == table.end()) table.emplace_back(text);
}

}  // namespace

CFastInfosetVocabulary::CFastInfosetVocabulary(std::string_view uri) : m_uri(uri) {
    if (uri.empty()) throw CKvInvalidParamException("The URI of a vocabulary may not be empty");
}
CFastInfosetVocabulary::CFastInfosetVocabulary(const CFastInfosetVocabulary&) = default;
CFastInfosetVocabulary& CFastInfosetVocabulary::operator=(const CFastInfosetVocabulary&) = default;
CFastInfosetVocabulary::~CFastInfosetVocabulary() = default;

void CFastInfosetVocabulary::AddPrefix(std::string_view prefix) {
    if (prefix != "xml") AddTo(m_prefixes, prefix);
}

void CFastInfosetVocabulary::AddNamespace(std::string_view uri) {
    if (uri != internal::kXmlNamespace) AddTo(m_namespaces, uri);
}

void CFastInfosetVocabulary::AddLocalName(std::string_view name) {
    AddTo(m_localNames, name);
}

void CFastInfosetVocabulary::AddAttributeValue(std::string_view value) {
    AddTo(m_attributeValues, value);
}

void CFastInfosetVocabulary::AddText(std::string_view text) {
    AddTo(m_texts, text);
}

void CFastInfosetVocabulary::AddAlphabet(std::string_view characters) {
    AddTo(m_alphabets, characters);
}

void CFastInfosetVocabulary::AddOtherName(std::string_view name) {
    AddTo(m_otherNames, name);
}

void CFastInfosetVocabulary::AddOtherUri(std::string_view uri) {
    AddTo(m_otherUris, uri);
}

void CFastInfosetVocabulary::AddOtherText(std::string_view text) {
    AddTo(m_otherTexts, text);
}

void CFastInfosetVocabulary::AddElementName(std::string_view prefix, std::string_view namespaceUri,
                                            std::string_view localName) {
    AddName(m_elementNames, prefix, namespaceUri, localName);
}

void CFastInfosetVocabulary::AddAttributeName(std::string_view prefix, std::string_view namespaceUri,
                                              std::string_view localName) {
    AddName(m_attributeNames, prefix, namespaceUri, localName);
}

void CFastInfosetVocabulary::AddName(std::vector<Name>& names, std::string_view prefix,
                                     std::string_view namespaceUri, std::string_view localName) {
    if (namespaceUri.empty() && !prefix.empty())
        throw CKvInvalidParamException("A name with a prefix needs a namespace");
    if (!prefix.empty()) AddPrefix(prefix);
    if (!namespaceUri.empty()) AddNamespace(namespaceUri);
    AddLocalName(localName);
    const bool known = std::any_of(names.begin(), names.end(), [&](const Name& name) {
        return name.prefix == prefix && name.namespaceUri == namespaceUri && name.localName == localName;
    });
    if (!known) names.push_back({std::string(prefix), std::string(namespaceUri), std::string(localName)});
}

}  // namespace KvXmlLib16
