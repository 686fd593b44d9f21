/// Any bytes as JSON: reading them straight into a tree must give the same tree, or the same error, as
/// reading the XML text that they are converted to. The first two bytes choose the options.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/roundtrip.h"
#include "kvxml/json/json_reader_to_xml_handler.h"
#include "kvxml/kvxml.h"
#include "kvxml/settings/json_context.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/xml/text_stream.h"

using fuzzing::Fail;
using namespace KvXmlLib16;

namespace {

void AppendName(std::string& out, const std::string& uri, const std::string& local) {
    if (!uri.empty()) out.append(1, '{').append(uri) += '}';
    out += local;
}

/// Elements, attributes and texts. Formatted text has blanks in the texts of elements that have children.
void Describe(std::string& out, const CXmlElement& element) {
    out += '(';
    AppendName(out, element.GetNamespaceURI(), element.GetLocalName());
    for (const CXmlAttribute* attribute : element.GetAttributes()) {
        out += '@';
        AppendName(out, attribute->GetNamespaceURI(), attribute->GetLocalName());
        out.append(1, '=').append(attribute->GetValueView());
    }
    out += '\'';
    for (const char character : element.GetTextView())
        if (element.GetFirstElement() == nullptr || (character != '\n' && character != '\t'))
            out += character;
    for (const CXmlElement* child = element.GetFirstElement(); child != nullptr;
         child = child->GetNextSiblingElement())
        Describe(out, *child);
    out += ')';
}

/// Describes what it is read from.
class CDescription final : public CXmlObjectBase {
public:
    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return std::string(); }
    std::string GetNamespace() const override { return std::string(); }

    std::string text;

protected:
    void ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const override {}
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement*, const CSerializationContext&,
                             bool) override {
        Describe(text, *element);
        for (const char* prefix : {"", "p", "q", "xml"})
            text += '\n' + element->GetDocument()->LookupNamespaceFromAlias(prefix);
        return nullptr;
    }
};

template <class Action>
std::string ErrorOf(Action action) {
    try {
        action();
    } catch (const CKvException& e) {
        return e.GetMessage();
    }
    return std::string();
}

bool IsAboutDepth(const std::string& error) {
    return error.find("nested deeper") != std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    CSerializationContext context;
    CJsonContext& settings = context.GetJsonContext();
    settings.SetSupportRoundtrip(static_cast<JsonRoundTrip>(2 - data[0] % 3));
    if ((data[1] & 1) != 0) context.SetSchemaType(SchemaType_NoNamespaces);
    if ((data[1] & 2) != 0) context.SetStripCDATA(false);
    if ((data[1] & 4) != 0) settings.GetAllowComments(false);
    if ((data[1] & 8) != 0) settings.SetRootElementName("root");
    if ((data[1] & 16) != 0) context.SetMaxElementDepth(4);
    context.SetMaxInflatedSize(1U << 20);
    data += 2;
    size -= 2;

    CDescription direct;
    const std::string error = ErrorOf([&] { direct.FromJsonStream(data, size, context); });

    CDescription converted;
    CBinaryData xml;
    std::string convertedError = ErrorOf([&] { xml = CXmlDocument(context).LoadJsonStream(data, size); });
    if (!convertedError.empty()) {
        convertedError = "Error converting JSON to XML:\n" + convertedError;
    } else {
        convertedError = ErrorOf([&] { converted.FromXmlStream(xml, context); });
    }
    if (IsAboutDepth(error) || IsAboutDepth(convertedError)) return 0;  // found out later in XML text
    if (error != convertedError) Fail("different errors", error, convertedError);
    if (error.empty() && direct.text != converted.text) Fail("different trees", direct.text, converted.text);

    // The handler is given text, not bytes in UTF-16.
    if (std::find(data, data + size, std::uint8_t{0}) != data + size) return 0;
    // The handler refuses more, as it writes while it reads, but what it writes is the same.
    CTextStream stream;
    CXmlTextWriter writer(&stream);
    writer.SetFormatted(false);
    std::string handlerError = ErrorOf([&] {
        CJsonTextReader reader(
            std::make_unique<CJsonReaderToXmlHandler>(&writer, settings.GetSupportRoundtrip()), settings);
        reader.Read(std::string_view(reinterpret_cast<const char*>(data), size));
        writer.EndDocument();
    });
    if (!handlerError.empty() || !error.empty() || context.GetSchemaType() == SchemaType_NoNamespaces)
        return 0;
    CDescription written;
    handlerError = ErrorOf([&] { written.FromXml(stream.TakeText().c_str(), context); });
    if (!handlerError.empty() || written.text != direct.text)
        Fail("different through the handler", direct.text, handlerError + written.text);
    return 0;
}
