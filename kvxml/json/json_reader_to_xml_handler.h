/// Writes what a JSON reader finds as an XML document.
///
///     CJsonTextReader reader(std::make_unique<CJsonReaderToXmlHandler>(&writer, JsonRoundTrip_Full));
///     writer.BeginOutput();
///     reader.Read(json);
///     writer.EndDocument();
#pragma once

#include <memory>
#include <string>

#include "kvxml/export.h"
#include "kvxml/json/json_text_reader.h"
#include "kvxml/settings/json_context.h"

namespace KvXmlLib16 {

class CXmlWriter;

/// Members become elements, arrays repeated elements, members named with "@" attributes and "#text" the text
/// of the element; docs/json.md has all rules. The outermost value is an object with one member, the document
/// element.
///
/// Elements are written as they come, so that attributes must stand in front of child elements here. The
/// entry points of documents and objects take them in any order.
///
/// CKvValidationException with the path for names that are none in XML, nameless items, and documents
/// without exactly one root; CKvInvalidStateException for values that cannot be written, with the reason
/// inside.
class KVXML_EXPORT CJsonReaderToXmlHandler : public IJsonReaderHandler, public IErrorPathProvider {
public:
    /// `writer` must outlive the handler, which neither begins nor ends its output.
    CJsonReaderToXmlHandler(CXmlWriter* writer, JsonRoundTrip roundTrip);
    CJsonReaderToXmlHandler(const CJsonReaderToXmlHandler&) = delete;
    CJsonReaderToXmlHandler& operator=(const CJsonReaderToXmlHandler&) = delete;
    ~CJsonReaderToXmlHandler() override;

    void OnStartDocument() override;
    void OnEndDocument() override;
    void OnName(const std::string& name) override;
    void OnString(const std::string& value) override;
    void OnNumber(const std::string& text) override;
    void OnStartObject(int depth) override;
    void OnEndObject() override;
    void OnStartArray(int depth) override;
    void OnEndArray() override;
    void OnBoolean(bool value) override;
    void OnNull() override;

    /// "$.orders.order[3]"; the items of arrays are counted from 0.
    std::string GetErrorPath() const override;

private:
    struct CState;
    std::unique_ptr<CState> m_state;
};

}  // namespace KvXmlLib16
