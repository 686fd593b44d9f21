#include "kvxml/json/json_text_reader.h"

#include <utility>

#include "kvxml/json/internal/json_scanner.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/settings/json_context.h"

namespace KvXmlLib16 {

namespace {

/// Passes the scanner's events on as strings in the local code page.
class CAdapter {
public:
    explicit CAdapter(IJsonReaderHandler& handler)
        : m_handler(handler),
          m_pathProvider(dynamic_cast<const IErrorPathProvider*>(&handler)),
          m_isLocalUtf8(internal::IsLocalUtf8()) {}

    void Name(const internal::CJsonText& name) { m_handler.OnName(ToLocal(name.text)); }
    void String(const internal::CJsonText& text) { m_handler.OnString(ToLocal(text.text)); }
    void Number(std::string_view text) { m_handler.OnNumber(std::string(text)); }
    void Boolean(bool value) { m_handler.OnBoolean(value); }
    void Null() { m_handler.OnNull(); }
    void StartObject(int depth) { m_handler.OnStartObject(depth); }
    void EndObject() { m_handler.OnEndObject(); }
    void StartArray(int depth) { m_handler.OnStartArray(depth); }
    void EndArray() { m_handler.OnEndArray(); }
    void Item() {}
    std::string GetErrorPath() const {
        return m_pathProvider == nullptr ? std::string() : m_pathProvider->GetErrorPath();
    }

private:
    std::string ToLocal(std::string_view text) const {
        return m_isLocalUtf8 ? std::string(text) : internal::Utf8ToLocal(text);
    }

    IJsonReaderHandler& m_handler;
    const IErrorPathProvider* const m_pathProvider;
    const bool m_isLocalUtf8;
};

}  // namespace

IJsonReaderHandler::~IJsonReaderHandler() = default;
IErrorPathProvider::~IErrorPathProvider() = default;

CJsonReaderDefaultHandler::~CJsonReaderDefaultHandler() = default;
void CJsonReaderDefaultHandler::OnStartDocument() {}
void CJsonReaderDefaultHandler::OnEndDocument() {}
void CJsonReaderDefaultHandler::OnName(const std::string&) {}
void CJsonReaderDefaultHandler::OnString(const std::string&) {}
void CJsonReaderDefaultHandler::OnNumber(const std::string&) {}
void CJsonReaderDefaultHandler::OnStartObject(int) {}
void CJsonReaderDefaultHandler::OnEndObject() {}
void CJsonReaderDefaultHandler::OnStartArray(int) {}
void CJsonReaderDefaultHandler::OnEndArray() {}
void CJsonReaderDefaultHandler::OnBoolean(bool) {}
void CJsonReaderDefaultHandler::OnNull() {}

CJsonTextReader::CJsonTextReader(std::unique_ptr<IJsonReaderHandler> handler)
    : m_handler(std::move(handler)) {}

CJsonTextReader::CJsonTextReader(std::unique_ptr<IJsonReaderHandler> handler, const CJsonContext& settings,
                                 std::int32_t maxDepth)
    : m_handler(std::move(handler)),
      m_maxDepth(maxDepth),
      m_allowComments(settings.GetAllowComments()),
      m_rootElementName(internal::LocalToUtf8(settings.GetRootElementNameRef())),
      m_arrayItemName(internal::LocalToUtf8(settings.GetArrayItemNameRef())) {}

CJsonTextReader::~CJsonTextReader() = default;

void CJsonTextReader::Read(std::string_view json) {
    std::string utf8;
    if (!internal::IsLocalUtf8()) json = utf8 = internal::LocalToUtf8(json);
    m_handler->OnStartDocument();
    CAdapter adapter(*m_handler);
    internal::ScanJson(json, {m_maxDepth, m_allowComments}, m_rootElementName, m_arrayItemName, adapter);
    m_handler->OnEndDocument();
}

}  // namespace KvXmlLib16
