#include "kvxml/xml/xml_document.h"

#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/settings/document_check.h"
#include "kvxml/settings/json_context.h"
#include "kvxml/xml/internal/xml_reading.h"
#include "kvxml/xml/internal/xml_tree.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

CXmlDocument::CXmlDocument() : CXmlDocument(nullptr, CSerializationContext::GetDefaultContext()) {}

CXmlDocument::CXmlDocument(const CSerializationContext& context) : CXmlDocument(nullptr, context) {}

CXmlDocument::CXmlDocument(ElementFilter filter)
    : CXmlDocument(filter, CSerializationContext::GetDefaultContext()) {}

CXmlDocument::CXmlDocument(ElementFilter filter, const CSerializationContext& context)
    : m_filter(filter), m_context(&context), m_schemaType(context.GetSchemaType()) {}

CXmlDocument::CXmlDocument(const CSerializationContext&& context)
    : CXmlDocument(nullptr, static_cast<const CSerializationContext&&>(context)) {}

CXmlDocument::CXmlDocument(ElementFilter filter, const CSerializationContext&& context)
    : m_filter(filter),
      m_ownContext(std::make_shared<const CSerializationContext>(context)),
      m_context(m_ownContext.get()),
      m_schemaType(context.GetSchemaType()) {}

CXmlDocument::CXmlDocument(CXmlDocument&& other) noexcept
    : m_tree(std::move(other.m_tree)),
      m_filter(other.m_filter),
      m_ownContext(other.m_ownContext),  // NOLINT(performance-move-constructor-init): both keep it
      m_context(other.m_context),
      m_schemaType(other.m_schemaType) {
    if (m_tree != nullptr) m_tree->SetDocument(this);
}

CXmlDocument& CXmlDocument::operator=(CXmlDocument&& other) noexcept {
    if (this == &other) return *this;
    m_tree = std::move(other.m_tree);
    m_filter = other.m_filter;
    m_ownContext = other.m_ownContext;
    m_context = other.m_context;
    m_schemaType = other.m_schemaType;
    if (m_tree != nullptr) m_tree->SetDocument(this);
    return *this;
}

CXmlDocument::~CXmlDocument() = default;

void CXmlDocument::Cleanup() {
    m_tree.reset();
}

/// Null when the context has no check.
std::unique_ptr<CDocumentJudge> CXmlDocument::BeginJudging(const CReadingPlaces* places, bool isJson) const {
    const std::shared_ptr<const CDocumentCheck>& check = m_context->GetDocumentCheck();
    if (check == nullptr) return nullptr;
    CJudgedDocument document;
    document.places = places;
    document.ignoresNamespaces = m_context->GetIgnoreNamespaces();
    document.keepsCData = !isJson && !m_context->GetStripCDATA();
    if (isJson && m_context->GetJsonContext().GetSupportRoundtrip() != JsonRoundTrip_Full)
        document.ignoresNamespaces = true;
    return check->Begin(document);
}

internal::CXmlTree& CXmlDocument::Tree() {
    if (m_tree == nullptr) m_tree = std::make_unique<internal::CXmlTree>(this, !internal::IsLocalUtf8());
    return *m_tree;
}

CXmlElement* CXmlDocument::GetDocumentElement() noexcept {
    return m_tree == nullptr ? nullptr : m_tree->GetRoot();
}

const CXmlElement* CXmlDocument::GetDocumentElement() const noexcept {
    return m_tree == nullptr ? nullptr : m_tree->GetRoot();
}

std::string CXmlDocument::LookupNamespaceFromAlias(const char* prefix) const {
    if (m_tree == nullptr) return std::string();
    const auto& prefixes = m_tree->Prefixes();
    const auto found = prefixes.find(std::string_view(internal::OrEmpty(prefix)));
    return found == prefixes.end() ? std::string() : found->second;
}

std::string CXmlDocument::LookupAliasFromNamespace(const char* uri) const {
    return m_tree == nullptr ? std::string() : m_tree->FindPrefix(internal::OrEmpty(uri));
}

// --- loading ----------------------------------------------------------------------------------------------

void CXmlDocument::LoadXml(const char* xml) {
    LoadXmlText(xml == nullptr ? std::string_view() : xml);
}

void CXmlDocument::LoadXmlText(std::string_view xml) {
    Cleanup();
    if (xml.empty()) throw CKvException("XML String is empty!");
    ParseText(reinterpret_cast<const unsigned char*>(xml.data()), xml.size(), Encoding::Declared);
}

void CXmlDocument::LoadXml(const wchar_t* xml) {
    Cleanup();
    const std::string text = internal::WideToUtf8(xml == nullptr ? L"" : xml);
    ParseText(reinterpret_cast<const unsigned char*>(text.data()), text.size(), Encoding::Utf8);
}

void CXmlDocument::ParseText(const unsigned char* data, std::size_t length, Encoding encoding) {
    const std::string_view text(reinterpret_cast<const char*>(data), length);
    std::string utf8;
    {
        CReading reading(*this, encoding, length);
        utf8 = ParseOrConvert(reading.reader, text,
                              [&] { reading.reader.ParseWhole(text.data(), text.size()); });
    }
    if (!utf8.empty()) ParseConverted(utf8);
}

void CXmlDocument::ParseConverted(const std::string& utf8) {
    Cleanup();
    ParseText(reinterpret_cast<const unsigned char*>(utf8.data()), utf8.size(), Encoding::Utf8);
}

}  // namespace KvXmlLib16
