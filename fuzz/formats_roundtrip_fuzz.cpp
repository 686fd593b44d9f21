/// Any XML document through an untyped element into Fast Infoset and JSON: what is read back must have the
/// same content as the XML text. The first byte chooses the settings.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/roundtrip.h"
#include "kvxml/kvxml.h"
#include "tests/support/xml_tree_dump.h"

using fuzzing::Fail;
using namespace KvXmlLib16;

namespace {

template <class Load>
std::string ContentOf(const char* what, const std::string& xml, Load load) {
    try {
        CXmlDocument document;
        load(document);
        return testsupport::Dump(document.GetDocumentElement());
    } catch (const CKvException& e) {
        // JSON is read to a depth of 100.
        if (e.GetMessage().find("depth limit") == std::string::npos) Fail(what, xml, e.GetFullMessage());
        return std::string();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    CSerializationContext context;
    context.SetMaxInflatedSize(1U << 22);
    context.GetJsonContext().SetEscapeStrings(true);
    CFastInfosetContext& settings = context.GetFIContext();
    settings.SetWriteTypedValues((data[0] & 1) != 0);
    settings.SetUseRestrictedAlphabets((data[0] & 2) != 0);
    if ((data[0] & 4) != 0) settings.SetMaxTableEntries(2);
    const bool formatted = (data[0] & 8) != 0;
    CElement element;
    std::string xml;
    try {
        element.FromXmlStream(data + 1, size - 1, context);
        // What XML text does not keep is gone when it was read once more.
        for (int generation = 0; generation < 2; ++generation) {
            xml = element.ToXml(true, false, EOLType_LF, context);
            element.FromXml(xml.c_str(), context);
        }
        if (element.ToXml(true, false, EOLType_LF, context) != xml) return 0;
    } catch (const CKvException&) {
        return 0;
    }
    const std::string expected = ContentOf("XML is not read back", xml,
                                           [&](CXmlDocument& document) { document.LoadXml(xml.c_str()); });
    try {
        const CBinaryData infoset = element.ToFastInfosetStream(FInfoDecl_None, context);
        const std::string fromInfoset = ContentOf("Fast Infoset is not read back", xml, [&](CXmlDocument& d) {
            d.LoadXmlStream(infoset.GetData(), infoset.GetLength());
        });
        if (fromInfoset != expected) Fail("Fast Infoset is different", xml, fromInfoset);
        const std::string json = element.ToJson(formatted, EOLType_LF, context);
        const std::string fromJson = ContentOf("JSON is not read back", xml + "\n" + json,
                                               [&](CXmlDocument& d) { d.BuildFromJson(json.c_str()); });
        if (!fromJson.empty() && fromJson != expected) Fail("JSON is different", xml + "\n" + json, fromJson);
    } catch (const CKvException& e) {
        Fail("not written", xml, e.GetFullMessage());
    }
    return 0;
}
