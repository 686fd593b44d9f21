/// Any bytes through an untyped element: what was accepted must be written in a form that reads back to the
/// same content, and from the second time on to the same text when the document element declares all
/// namespaces. (Other declarations may move there.) Writing the parsed tree directly must give the same text
/// as well. The first byte chooses the options.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/roundtrip.h"
#include "kvxml/kvxml.h"
#include "tests/support/xml_tree_dump.h"

using fuzzing::Fail;
using namespace KvXmlLib16;

namespace {

std::string WriteTree(const CXmlElement& root, bool formatted, const CSerializationContext& context) {
    CTextStream stream(XmlEncoding_UTF8);
    CXmlTextWriter writer(&stream);
    writer.SetFormatted(formatted);
    writer.SetIndentChars(context.GetIndentChars());
    writer.BeginOutput();
    writer.WriteDeclaration();
    WriteXmlTree(root, writer, context);
    writer.EndDocument();
    return stream.TakeText();
}

std::string ContentOf(const std::string& xml, const CSerializationContext& context) {
    CXmlDocument document(context);
    document.LoadXml(xml.c_str());
    return testsupport::Dump(document.GetDocumentElement());
}

bool DeclaresAllAtRoot(const std::string& xml) {
    const std::size_t root = xml.find('>', xml.find("?>") + 2);
    return xml.find(" xmlns", root) == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    CSerializationContext context;
    context.SetMaxInflatedSize(1U << 22);
    if ((data[0] & 1) != 0) context.SetSchemaType(SchemaType_NoNamespaces);
    if ((data[0] & 2) != 0) context.SetDefaultNamespaceURI("urn:default");
    const bool hasAlias = (data[0] & 4) != 0;
    if (hasAlias) context.GetNamespaceAliases().Add("p", "urn:alias");
    if ((data[0] & 8) != 0) context.SetIndentChars("");
    const bool formatted = (data[0] & 16) != 0;
    CXmlDocument document(context);
    CElement element;
    try {
        document.LoadXmlStream(data + 1, size - 1);
        element.FromXmlStream(data + 1, size - 1, context);
    } catch (const CKvException&) {
        return 0;
    }
    const std::string first = element.ToXml(true, formatted, EOLType_LF, context);
    const std::string direct = WriteTree(*document.GetDocumentElement(), formatted, context);
    if (first != direct) Fail("the tree is written differently", first, direct);
    std::string last = first;
    for (int generation = 2; generation <= 3; ++generation) {
        try {
            element.FromXml(last.c_str(), context);  // read over what was there
        } catch (const CKvException& e) {
            Fail("written document refused", e.GetFullMessage(), last);
        }
        const std::string text = element.ToXml(true, formatted, EOLType_LF, context);
        if (ContentOf(text, context) != ContentOf(first, context)) Fail("content changed", first, text);
        if (generation > 2 && !hasAlias && DeclaresAllAtRoot(last) && text != last)
            Fail("written document changed", last, text);
        last = text;
    }
    return 0;
}
