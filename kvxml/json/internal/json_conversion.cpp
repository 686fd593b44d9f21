#include "kvxml/json/internal/json_conversion.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/json/internal/json_sinks.h"
#include "kvxml/json/internal/json_to_xml.h"
#include "kvxml/json/internal/json_token_list.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/xml/internal/tree_limits.h"
#include "kvxml/xml/text_stream.h"
#include "kvxml/xml/xml_text_writer.h"

namespace KvXmlLib16::internal {

namespace {

template <class Handler>
void Scan(std::string_view json, const CJsonContext& settings, Handler& handler) {
    CJsonSyntax syntax;
    syntax.allowComments = settings.GetAllowComments();
    ScanJson(json, syntax, LocalToUtf8(settings.GetRootElementNameRef()),
             LocalToUtf8(settings.GetArrayItemNameRef()), handler);
}

template <class Sink>
void Convert(std::string_view json, const CSerializationContext& context, Sink& sink, bool literal,
             bool anyOrder) {
    const CJsonContext& settings = context.GetJsonContext();
    CJsonMapping mapping;
    mapping.roundTrip = settings.GetSupportRoundtrip();
    mapping.namespaces = context.GetSchemaType() != SchemaType_NoNamespaces;
    mapping.allowLate = !anyOrder;
    mapping.deliverLiteral = literal;
    mapping.exactStrings = settings.GetExactStrings();
    CJsonToXml<Sink> handler(mapping, sink);
    try {
        if (anyOrder) {
            CJsonTokenList tokens;
            Scan(json, settings, tokens);
            tokens.Replay(handler);
        } else {
            Scan(json, settings, handler);
        }
    } catch (const CTreeLimitPassed& e) {
        throw CKvException(e.Message() + " at " + handler.GetErrorPath());
    }
    handler.EndDocument();
}

}  // namespace

CBinaryData JsonToXml(std::string_view json, const CSerializationContext& context) {
    for (bool anyOrder = false;; anyOrder = true) {
        CTextStream stream(XmlEncoding_UTF8);
        CXmlTextWriter writer(&stream);
        writer.SetLossless(context.GetJsonContext().GetExactStrings());
        writer.BeginOutput();
        CJsonWriterSink sink(writer, false, OrUnlimited(context.GetMaxElementDepth()));
        sink.KeepTextsWhole(writer);
        try {
            Convert(json, context, sink, true, anyOrder);
        } catch (const CLateJsonAttribute&) {
            continue;
        }
        writer.EndDocument();
        // The writer passed the text on as it was, so it is UTF-8 whatever the local code page is.
        CBinaryData xml;
        stream.GetBuffer().ForEachBlock(
            [&](std::string_view block) { xml.Append(block.data(), block.size()); });
        return xml;
    }
}

bool JsonToTree(std::string_view json, const CSerializationContext& context, CXmlTreeBuilder& builder,
                bool anyOrder) {
    const bool stripsCData = context.GetStripCDATA() && !context.GetJsonContext().GetExactStrings();
    CJsonTreeSink sink(builder, stripsCData);
    try {
        Convert(json, context, sink, false, anyOrder);
        return true;
    } catch (const CLateJsonAttribute&) {
        return false;
    } catch (...) {
        builder.Abandon();
        throw;
    }
}

}  // namespace KvXmlLib16::internal
