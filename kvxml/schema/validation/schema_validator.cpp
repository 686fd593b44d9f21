#include "kvxml/schema/validation/schema_validator.h"

#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/schema/validation/internal/element_validator.h"
#include "kvxml/schema/validation/internal/tree_feed.h"
#include "kvxml/xml/internal/document_events.h"
#include "kvxml/xml/xml_reader.h"

namespace KvXmlLib16 {

namespace {

/// The place where a reader is.
class CReaderPlace final : public internal::IDocumentPlace {
public:
    void SetReader(const CXmlReader& reader) noexcept { m_reader = &reader; }

    bool Resolve(std::string_view prefix, std::string_view& namespaceUri) const override {
        return m_reader->LookupNamespace(prefix, namespaceUri);
    }
    std::uint64_t GetMark() const override { return m_reader->GetOffset(); }
    void Locate(std::uint64_t mark, CFault& fault) const override {
        fault.file = m_reader->GetFileName();
        internal::CReaderEvents::Locate(*m_reader, mark, fault.line, fault.column);
    }
    std::string GetPath() const override { return m_reader->GetPath(); }

private:
    const CXmlReader* m_reader = nullptr;
};

/// Hands the events of a reader to the validator, until the report is full.
class CReaderFeed final : public internal::IDocumentEvents {
public:
    explicit CReaderFeed(internal::CElementValidator& elements) noexcept : m_elements(elements) {}

    void SetReport(const CFaultList& report) noexcept { m_report = &report; }
    bool OnStart(const internal::CDocumentName& name, const internal::CDocumentAttribute* attributes,
                 std::size_t count, std::uint64_t offset) override {
        m_elements.Start(name, attributes, count, offset);
        Wish();
        return !m_report->IsFull();
    }
    bool OnText(std::string_view text) override {
        m_elements.Text(text);
        return !m_report->IsFull();
    }
    bool OnEnd() override {
        m_elements.EndElement();
        Wish();
        return !m_report->IsFull();
    }

private:
    void Wish() noexcept {
        using Use = internal::CElementValidator::TextUse;
        const Use use = m_elements.GetTextUse();
        SetWish(use == Use::None         ? IDocumentEvents::Wish::None
                : use == Use::OnlyBlanks ? IDocumentEvents::Wish::NotBlank
                                         : IDocumentEvents::Wish::All);
    }

    internal::CElementValidator& m_elements;
    const CFaultList* m_report = nullptr;
};

}  // namespace

struct CSchemaValidator::Impl {
    Impl(std::shared_ptr<const CSchemaSet> schema, const CValidationOptions& given)
        : elements(std::move(schema)), feed(elements), options(given) {}

    internal::CElementValidator elements;
    CReaderPlace place;
    CReaderFeed feed;
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
        if (reader.GetEvent() == XmlEvent::StartElement)
            internal::CReaderEvents::Deliver(reader, m_impl->feed);
        if (!report.IsFull()) internal::CReaderEvents::ReadAll(reader, m_impl->feed);
    } catch (const CKvException& e) {
        m_impl->elements.Fault(e.GetMessage(), "");
        return report;
    }
    if (!report.IsFull()) End();
    return report;
}

CValidationReport CSchemaValidator::Validate(const CXmlDocument& document, std::string_view name) {
    CValidationReport report(m_impl->options.maxFaults);
    internal::CTreeFeed tree(m_impl->elements, name, {});
    m_impl->elements.Begin(tree, report, m_impl->options.ignoreNamespaces);
    try {
        tree.Walk(document, report);
    } catch (const CKvException& e) {
        m_impl->elements.Fault(e.GetMessage(), "");
        return report;
    }
    if (!report.IsFull()) End();
    return report;
}

void CSchemaValidator::Begin(const CXmlReader& reader, CValidationReport& report) {
    m_impl->place.SetReader(reader);
    m_impl->feed.SetReport(report);
    m_impl->elements.Begin(m_impl->place, report, m_impl->options.ignoreNamespaces);
}

void CSchemaValidator::OnEvent(const CXmlReader& reader) {
    internal::CReaderEvents::Deliver(reader, m_impl->feed);
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
