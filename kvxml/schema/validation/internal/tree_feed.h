/// Hands the elements of a tree to the validator: of one that is there, or while it is built.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/schema/validation/internal/element_validator.h"
#include "kvxml/settings/document_check.h"

namespace KvXmlLib16 {
class CXmlDocument;
}

namespace KvXmlLib16::internal {

/// One tree. Texts of trees in another local code page than UTF-8 are converted.
class CTreeFeed final : public IDocumentPlace {
public:
    CTreeFeed(CElementValidator& elements, std::string_view name, const CJudgedDocument& document);

    void Start(const CXmlElement& element);
    void End(const CXmlElement& element);
    /// All elements of the tree, or until the report is full. CKvException when there are none.
    void Walk(const CXmlDocument& document, const CFaultList& report);

    bool Resolve(std::string_view prefix, std::string_view& namespaceUri) const override;
    std::uint64_t GetMark() const override {
        return m_document.places == nullptr ? 0 : m_document.places->GetMark();
    }
    void Locate(std::uint64_t mark, CFault& fault) const override;
    std::string GetPath() const override;

private:
    void Text(const CXmlElement& element);
    void StartPending();

    CElementValidator& m_elements;
    const std::string m_name;
    const CJudgedDocument m_document;
    const bool m_converts;
    const CXmlElement* m_element = nullptr;
    /// Begun, but not told yet: where elements may be null, which shows at the next event.
    const CXmlElement* m_pending = nullptr;
    std::vector<CDocumentAttribute> m_attributes;
    std::deque<std::string> m_converted;
    mutable std::string m_uri;
};

}  // namespace KvXmlLib16::internal
