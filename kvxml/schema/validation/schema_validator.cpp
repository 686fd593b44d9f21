#include "kvxml/schema/validation/schema_validator.h"

#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/schema/validation/internal/element_validator.h"
#include "kvxml/xml/xml_reader.h"

namespace KvXmlLib16 {

struct CSchemaValidator::Impl {
    Impl(std::shared_ptr<const CSchemaSet> schema, const CValidationOptions& given)
        : elements(std::move(schema)), options(given) {}

    internal::CElementValidator elements;
    CValidationOptions options;

    const CSerializationContext& Context() const {
        return options.context == nullptr ? CSerializationContext::GetDefaultContext() : *options.context;
    }
};

CSchemaValidator::CSchemaValidator(std::shared_ptr<const CSchemaSet> schema,
                                   const CValidationOptions& options)
    : m_impl(std::make_unique<Impl>(std::move(schema), options)) {}

CSchemaValidator::~CSchemaValidator() = default;

CValidationReport CSchemaValidator::ValidateFile(const char* fileName) {
    CXmlReader reader(m_impl->Context());
    reader.OpenFile(fileName);
    return Validate(reader);
}

CValidationReport CSchemaValidator::ValidateBuffer(const void* data, std::size_t length,
                                                   std::string_view name) {
    CXmlReader reader(m_impl->Context());
    reader.OpenBuffer(data, length, name);
    return Validate(reader);
}

CValidationReport CSchemaValidator::Validate(CXmlReader& reader) {
    CValidationReport report(m_impl->options.maxFaults);
    Begin(reader, report);
    try {
        if (reader.GetEvent() == XmlEvent::StartElement) m_impl->elements.OnEvent();
        while (!report.IsFull() && reader.Read())
            m_impl->elements.OnEvent();
    } catch (const CKvException& e) {
        m_impl->elements.Fault(e.GetMessage(), "");
        return report;
    }
    if (!report.IsFull()) End();
    return report;
}

void CSchemaValidator::Begin(const CXmlReader& reader, CValidationReport& report) {
    m_impl->elements.Begin(reader, report);
}

void CSchemaValidator::OnEvent(const CXmlReader&) {
    m_impl->elements.OnEvent();
}

void CSchemaValidator::End() {
    m_impl->elements.End();
}

const CElementDeclaration* CSchemaValidator::GetElementDeclaration() const noexcept {
    return m_impl->elements.GetElementDeclaration();
}

const CTypeDefinition* CSchemaValidator::GetTypeDefinition() const noexcept {
    return m_impl->elements.GetTypeDefinition();
}

}  // namespace KvXmlLib16
