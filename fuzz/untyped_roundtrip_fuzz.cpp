/// Any bytes through an untyped element: what was accepted must be written in a form that reads back to the
/// same text, and writing the parsed tree directly must give that text as well. The first byte chooses the
/// options.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "kvxml/kvxml.h"

using namespace KvXmlLib16;

namespace {

[[noreturn]] void Fail(const char* what, const std::string& first, const std::string& second) {
    std::fprintf(stderr, "%s:\n%s\n---\n%s\n", what, first.c_str(), second.c_str());
    std::abort();
}

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    CSerializationContext context;
    context.SetMaxInflatedSize(1U << 22);
    if ((data[0] & 1) != 0) context.SetSchemaType(SchemaType_NoNamespaces);
    if ((data[0] & 2) != 0) context.SetDefaultNamespaceURI("urn:default");
    if ((data[0] & 4) != 0) context.GetNamespaceAliases().Add("p", "urn:alias");
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
    try {
        element.FromXml(first.c_str(), context);  // read over what was there
    } catch (const CKvException& e) {
        Fail("written document refused", e.GetFullMessage(), first);
    }
    const std::string second = element.ToXml(true, formatted, EOLType_LF, context);
    if (first != second) Fail("written document changed", first, second);
    return 0;
}
