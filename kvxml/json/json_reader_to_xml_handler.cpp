#include "kvxml/json/json_reader_to_xml_handler.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/json/internal/json_sinks.h"
#include "kvxml/json/internal/json_to_xml.h"

namespace KvXmlLib16 {

struct CJsonReaderToXmlHandler::CState {
    CState(CXmlWriter& writer, JsonRoundTrip roundTrip)
        : isLocalUtf8(internal::IsLocalUtf8()),
          sink(writer, !isLocalUtf8, internal::OrUnlimited(std::uint32_t{0})),
          mapper({roundTrip, true, false, true, true}, sink) {}

    std::string ToUtf8(const std::string& local) const {
        return isLocalUtf8 ? local : internal::LocalToUtf8(local);
    }

    const bool isLocalUtf8;
    internal::CJsonWriterSink sink;
    internal::CJsonToXml<internal::CJsonWriterSink> mapper;
};

CJsonReaderToXmlHandler::CJsonReaderToXmlHandler(CXmlWriter* writer, JsonRoundTrip roundTrip)
    : m_state(std::make_unique<CState>(*writer, roundTrip)) {}

CJsonReaderToXmlHandler::~CJsonReaderToXmlHandler() = default;

void CJsonReaderToXmlHandler::OnStartDocument() {}

void CJsonReaderToXmlHandler::OnEndDocument() {
    m_state->mapper.EndDocument();
}

void CJsonReaderToXmlHandler::OnName(const std::string& name) {
    m_state->mapper.Name({m_state->ToUtf8(name), false, true});
}

void CJsonReaderToXmlHandler::OnString(const std::string& value) {
    m_state->mapper.String({m_state->ToUtf8(value), false, true});
}

void CJsonReaderToXmlHandler::OnNumber(const std::string& text) {
    m_state->mapper.String({text, false, true});
}

void CJsonReaderToXmlHandler::OnStartObject(int depth) {
    m_state->mapper.StartObject(depth);
}

void CJsonReaderToXmlHandler::OnEndObject() {
    m_state->mapper.EndObject();
}

void CJsonReaderToXmlHandler::OnStartArray(int depth) {
    m_state->mapper.StartArray(depth);
}

void CJsonReaderToXmlHandler::OnEndArray() {
    m_state->mapper.EndArray();
}

void CJsonReaderToXmlHandler::OnBoolean(bool value) {
    m_state->mapper.Boolean(value);
}

void CJsonReaderToXmlHandler::OnNull() {
    m_state->mapper.Null();
}

std::string CJsonReaderToXmlHandler::GetErrorPath() const {
    const std::string path = m_state->mapper.GetErrorPath();
    return m_state->isLocalUtf8 ? path : internal::Utf8ToLocal(path);
}

}  // namespace KvXmlLib16
