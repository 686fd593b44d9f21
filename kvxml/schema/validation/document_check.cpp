#include "kvxml/schema/validation/document_check.h"

#include <string>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/schema/validation/internal/element_validator.h"
#include "kvxml/schema/validation/internal/tree_feed.h"

namespace KvXmlLib16 {

namespace {

using internal::CElementValidator;
using internal::CTreeFeed;

class CSchemaJudge final : public CDocumentJudge {
public:
    CSchemaJudge(std::shared_ptr<const CSchemaSet> schema, const CJudgedDocument& document)
        : m_elements(std::move(schema)), m_tree(m_elements, {}, document) {
        m_elements.Begin(m_tree, m_faults, document.ignoresNamespaces);
    }

    void StartElement(const CXmlElement& element) override {
        m_tree.Start(element);
        Refuse();
    }
    void EndElement(const CXmlElement& element) override {
        m_tree.End(element);
        Refuse();
    }
    void EndDocument() override {
        m_elements.End();
        Refuse();
    }

private:
    void Refuse() const {
        if (m_faults.IsEmpty()) return;
        const CFault& fault = m_faults.GetFaults().front();
        std::string message = fault.message;
        if (!fault.constraint.empty()) message += " (" + fault.constraint + ")";
        if (fault.line != 0)
            message += " at line " + std::to_string(fault.line) + ", column " + std::to_string(fault.column);
        throw CKvSchemaValidationException(std::move(message), fault.path);
    }

    CFaultList m_faults{1};
    CElementValidator m_elements;
    CTreeFeed m_tree;
};

class CSchemaCheck final : public CDocumentCheck {
public:
    explicit CSchemaCheck(std::shared_ptr<const CSchemaSet> schema) noexcept : m_schema(std::move(schema)) {}

    std::unique_ptr<CDocumentJudge> Begin(const CJudgedDocument& document) const override {
        return std::make_unique<CSchemaJudge>(m_schema, document);
    }

private:
    const std::shared_ptr<const CSchemaSet> m_schema;
};

}  // namespace

std::shared_ptr<const CDocumentCheck> MakeDocumentCheck(std::shared_ptr<const CSchemaSet> schema) {
    return std::make_shared<const CSchemaCheck>(std::move(schema));
}

}  // namespace KvXmlLib16
