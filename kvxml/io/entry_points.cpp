// The To... and From... operations of every object, over all formats.
#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/fastinfoset/fast_infoset_writer.h"
#include "kvxml/io/internal/standard_streams.h"
#include "kvxml/json/json_text_writer.h"
#include "kvxml/objects/element.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/objects/xml_object_base.h"
#include "kvxml/platform/internal/text_settings.h"
#include "kvxml/settings/json_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/compression.h"
#include "kvxml/xml/binary_stream.h"
#include "kvxml/xml/file_text_stream.h"
#include "kvxml/xml/internal/text_encoding.h"
#include "kvxml/xml/text_stream.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_reader.h"
#include "kvxml/xml/xml_text_writer.h"

namespace KvXmlLib16 {

using internal::OrEmpty;

namespace {

/// Whether text goes to the file while it is written, and not by way of a buffer.
bool WritesToFileDirectly(CompressionType compression) {
    return internal::IsAsyncToXmlFile() && compression == CompressionType_None;
}

/// Writes a whole document, compressed on request, with the byte-order mark of its encoding.
void WriteFile(CBinaryData data, const char* fileName, XmlEncoding encoding, CompressionType compression) {
    if (compression == CompressionType_None) {
        CFileBinaryStream(data, fileName, encoding).Write();
        return;
    }
    // The byte-order mark belongs to the text, so it is compressed with it.
    if (internal::IsUtf16(encoding)) {
        CBinaryData marked(internal::kUtf16Mark);
        marked.Append(data);
        data = marked;
    }
    internal::Compress(data, compression);
    CFileBinaryStream(data, fileName, XmlEncoding_None).Write();
}

void RefuseZlibFile(CompressionType compression) {
    if (compression == CompressionType_ZLib) {
        throw CKvException("ZLIB Compression only available for To Stream methods.");
    }
}

}  // namespace

// --- writing ---------------------------------------------------------------------------------------------

namespace internal {

/// Calls the protected writing and reading operations for the entry points.
class CEntryPoints : public CXmlObjectBase {
public:
    static void Write(const CXmlObjectBase& object, CTextStream& stream, bool includeDocHeader,
                      bool formatted, EOLType eol, const CSerializationContext& context) {
        CXmlTextWriter writer(&stream);
        SetLayout(writer, formatted, eol, context);
        writer.SetWriteDefaultValues(context.GetWriteDefaultElementValues());
        writer.BeginOutput();
        if (includeDocHeader) writer.WriteDeclaration();
        ToXml_Int(&object, &writer, true, object.GetTargetNamespace().c_str(), context, false);
        writer.EndDocument();
    }

    static void WriteJson(const CXmlObjectBase& object, CTextStream& stream, bool formatted, EOLType eol,
                          const CSerializationContext& context) {
        const CJsonContext& settings = context.GetJsonContext();
        CJsonTextWriter writer(&stream);
        SetLayout(writer, formatted, eol, context);
        writer.SetSupportRoundtrip(settings.GetSupportRoundtrip());
        writer.SetEscapeStrings(settings.GetEscapeStrings());
        writer.BeginOutput();
        ToXml_Int(&object, &writer, true, object.GetTargetNamespace().c_str(), context, false);
        writer.EndDocument();
    }

    static CBinaryData WriteFastInfoset(const CXmlObjectBase& object, FInfoDecl decl,
                                        const CSerializationContext& context) {
        CFastInfosetWriter writer(context.GetFIContext(), decl, context.GetWriteDefaultElementValues());
        writer.BeginOutput();
        ToXml_Int(&object, &writer, true, object.GetTargetNamespace().c_str(), context, false);
        writer.EndDocument();
        return writer.TakeDocument();
    }

    static void Read(CXmlObjectBase& object, const CXmlDocument& document,
                     const CSerializationContext& context) {
        auto* root = const_cast<CXmlElement*>(document.GetDocumentElement());
        if (root == nullptr) throw CKvException("Invalid or empty XML document");
        if (const auto* generated = dynamic_cast<const CXmlGeneratedClass*>(&object)) {
            CheckDocumentElement(*generated, *root, context);
        }
        FromXml_Int(&object, root, root->GetFirstElement(), context, false);
    }

    /// `build` makes the tree of a document from JSON input.
    template <class Build>
    static void ReadJson(CXmlObjectBase& object, const CSerializationContext& context, Build build) {
        CXmlDocument document(context);
        try {
            build(document);
        } catch (const CKvSchemaValidationException&) {
            throw;
        } catch (const CKvException& e) {
            throw CKvException("Error converting JSON to XML:\n" + e.GetMessage(), e);
        }
        if (context.GetJsonContext().GetSupportRoundtrip() == JsonRoundTrip_Full ||
            context.GetIgnoreNamespaces()) {
            Read(object, document, context);
            return;
        }
        // Text without namespaces. The caller's context may be in use by other threads.
        CSerializationContext reading(context);
        reading.SetIgnoreNamespaces(true);
        Read(object, document, reading);
    }

private:
    template <class Writer>
    static void SetLayout(Writer& writer, bool formatted, EOLType eol, const CSerializationContext& context) {
        writer.SetFormatted(formatted);
        writer.SetIndentChars(context.GetIndentChars());
        writer.SetEOL(eol);
    }

    static void CheckDocumentElement(const CXmlGeneratedClass& object, const CXmlElement& root,
                                     const CSerializationContext& context) {
        const auto* record = object.GetClassInfo();
        const std::string ns = object.GetNamespace();
        if (!internal::DoesElementNameMatch(context, root, record->GetElementName(), ns) &&
            !internal::DoesElementNameMatch(context, root, object.GetElementNameView(), ns)) {
            throw CKvValidationException(
                FormatString("Invalid Element [%s] found.", root.GetLocalName().c_str()), root.GetXPath());
        }
    }
};

}  // namespace internal

std::string CXmlObjectBase::ToXml(bool includeDocHeader, bool formatted, EOLType eol,
                                  const CSerializationContext& context) const {
    CTextStream stream(XmlEncoding_UTF8);
    internal::CEntryPoints::Write(*this, stream, includeDocHeader, formatted, eol, context);
    return stream.TakeText();
}

CBinaryData CXmlObjectBase::ToXmlStream(bool includeDocHeader, bool formatted, XmlEncoding encoding,
                                        EOLType eol, const CSerializationContext& context,
                                        CompressionType compression) const {
    CTextStream stream(encoding);
    internal::CEntryPoints::Write(*this, stream, includeDocHeader, formatted, eol, context);
    CBinaryData data = stream.ToBinaryData();
    internal::Compress(data, compression);
    return data;
}

void CXmlObjectBase::ToXmlFile(const char* fileName, bool includeDocHeader, bool formatted,
                               XmlEncoding encoding, EOLType eol, const CSerializationContext& context,
                               CompressionType compression) const {
    RefuseZlibFile(compression);
    if (WritesToFileDirectly(compression)) {
        CFileTextStream stream(fileName, encoding);
        internal::CEntryPoints::Write(*this, stream, includeDocHeader, formatted, eol, context);
        return;
    }
    WriteFile(ToXmlStream(includeDocHeader, formatted, encoding, eol, context), fileName, encoding,
              compression);
}

std::string CXmlObjectBase::ToJson(bool formatted, EOLType eol, const CSerializationContext& context) const {
    CTextStream stream(XmlEncoding_UTF8);
    internal::CEntryPoints::WriteJson(*this, stream, formatted, eol, context);
    return stream.TakeText();
}

CBinaryData CXmlObjectBase::ToJsonStream(bool formatted, XmlEncoding encoding, EOLType eol,
                                         const CSerializationContext& context,
                                         CompressionType compression) const {
    CTextStream stream(encoding);
    internal::CEntryPoints::WriteJson(*this, stream, formatted, eol, context);
    CBinaryData data = stream.ToBinaryData();
    internal::Compress(data, compression);
    return data;
}

void CXmlObjectBase::ToJsonFile(const char* fileName, bool formatted, XmlEncoding encoding, EOLType eol,
                                const CSerializationContext& context, CompressionType compression) const {
    RefuseZlibFile(compression);
    if (WritesToFileDirectly(compression)) {
        CFileTextStream stream(fileName, encoding);
        internal::CEntryPoints::WriteJson(*this, stream, formatted, eol, context);
        return;
    }
    WriteFile(ToJsonStream(formatted, encoding, eol, context), fileName, encoding, compression);
}

void CXmlObjectBase::ToFastInfosetFile(const char* fileName, FInfoDecl decl,
                                       const CSerializationContext& context,
                                       CompressionType compression) const {
    RefuseZlibFile(compression);
    WriteFile(ToFastInfosetStream(decl, context), fileName, XmlEncoding_None, compression);
}

CBinaryData CXmlObjectBase::ToFastInfosetStream(FInfoDecl decl, const CSerializationContext& context,
                                                CompressionType compression) const {
    CBinaryData data = internal::CEntryPoints::WriteFastInfoset(*this, decl, context);
    internal::Compress(data, compression);
    return data;
}

// --- writing by named options and into streams -----------------------------------------------------------

std::string CXmlObjectBase::ToXml(const CWriteOptions& options, const CSerializationContext& context) const {
    return ToXml(options.declaration, options.formatted, options.eol, context);
}

std::string CXmlObjectBase::ToJson(const CWriteOptions& options, const CSerializationContext& context) const {
    return ToJson(options.formatted, options.eol, context);
}

CBinaryData CXmlObjectBase::ToXmlStream(const CWriteOptions& options,
                                        const CSerializationContext& context) const {
    return ToXmlStream(options.declaration, options.formatted, options.encoding, options.eol, context,
                       options.compression);
}

CBinaryData CXmlObjectBase::ToJsonStream(const CWriteOptions& options,
                                         const CSerializationContext& context) const {
    return ToJsonStream(options.formatted, options.encoding, options.eol, context, options.compression);
}

CBinaryData CXmlObjectBase::ToFastInfosetStream(const CWriteOptions& options,
                                                const CSerializationContext& context) const {
    return ToFastInfosetStream(options.fastInfosetDeclaration, context, options.compression);
}

void CXmlObjectBase::ToXmlFile(const char* fileName, const CWriteOptions& options,
                               const CSerializationContext& context) const {
    ToXmlFile(fileName, options.declaration, options.formatted, options.encoding, options.eol, context,
              options.compression);
}

void CXmlObjectBase::ToJsonFile(const char* fileName, const CWriteOptions& options,
                                const CSerializationContext& context) const {
    ToJsonFile(fileName, options.formatted, options.encoding, options.eol, context, options.compression);
}

void CXmlObjectBase::ToFastInfosetFile(const char* fileName, const CWriteOptions& options,
                                       const CSerializationContext& context) const {
    ToFastInfosetFile(fileName, options.fastInfosetDeclaration, context, options.compression);
}

void CXmlObjectBase::ToXmlStream(std::ostream& out, const CWriteOptions& options,
                                 const CSerializationContext& context) const {
    internal::COutput output(out);
    if (options.compression != CompressionType_None) return output.WriteLast(ToXmlStream(options, context));
    internal::COutputTextStream stream(output, options.encoding);
    internal::CEntryPoints::Write(*this, stream, options.declaration, options.formatted, options.eol,
                                  context);
}

void CXmlObjectBase::ToJsonStream(std::ostream& out, const CWriteOptions& options,
                                  const CSerializationContext& context) const {
    internal::COutput output(out);
    if (options.compression != CompressionType_None) return output.WriteLast(ToJsonStream(options, context));
    internal::COutputTextStream stream(output, options.encoding);
    internal::CEntryPoints::WriteJson(*this, stream, options.formatted, options.eol, context);
}

void CXmlObjectBase::ToFastInfosetStream(std::ostream& out, const CWriteOptions& options,
                                         const CSerializationContext& context) const {
    internal::COutput(out).WriteLast(ToFastInfosetStream(options, context));
}

// --- reading ---------------------------------------------------------------------------------------------

void CXmlObjectBase::FromXmlFile(const char* fileName, const CSerializationContext& context) {
    CXmlDocument document(context);
    document.Load(OrEmpty(fileName));
    internal::CEntryPoints::Read(*this, document, context);
}

void CXmlObjectBase::FromXml(const wchar_t* xml, const CSerializationContext& context) {
    CXmlDocument document(context);
    document.LoadXml(xml == nullptr ? L"" : xml);
    internal::CEntryPoints::Read(*this, document, context);
}

void CXmlObjectBase::FromXml(const char* xml, const CSerializationContext& context) {
    CXmlDocument document(context);
    document.LoadXml(OrEmpty(xml));
    internal::CEntryPoints::Read(*this, document, context);
}

void CXmlObjectBase::ReadXmlText(std::string_view xml, const CSerializationContext& context) {
    CXmlDocument document(context);
    document.LoadXml(xml);
    internal::CEntryPoints::Read(*this, document, context);
}

void CXmlObjectBase::FromXml(CXmlReader& reader, const CSerializationContext& context) {
    if (reader.GetEvent() != XmlEvent::StartElement)
        throw CKvInvalidStateException("The reader does not stand at the start of an element");
    const std::string name(reader.GetLocalName());
    const std::string path = reader.GetPath();
    const std::uint64_t line = reader.GetLine();
    CXmlDocument document(context);
    reader.ReadSubtree(document);
    try {
        FromXmlElement(document.GetDocumentElement(), context);
    } catch (const CKvException& e) {
        throw CKvValidationException("Invalid element [" + name + "] at line " + std::to_string(line), path,
                                     e);
    }
}

void CXmlObjectBase::FromXmlStream(std::istream& in, const CSerializationContext& context) {
    const std::string bytes = internal::ReadRest(in);
    FromXmlStream(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), context);
}

void CXmlObjectBase::FromXmlStream(const CBinaryData& data, const CSerializationContext& context) {
    FromXmlStream(data.GetData(), data.GetLength(), context);
}

void CXmlObjectBase::FromXmlStream(const unsigned char* data, std::size_t length,
                                   const CSerializationContext& context) {
    CXmlDocument document(context);
    document.LoadXmlStream(data, data == nullptr ? 0 : length);
    internal::CEntryPoints::Read(*this, document, context);
}

void CXmlObjectBase::FromXmlElement(const CXmlElement* element, const CSerializationContext& context) {
    if (element == nullptr) throw CKvInvalidParamException("The element to read from may not be NULL");
    auto* source = const_cast<CXmlElement*>(element);
    FromXml_Int(source, source->GetFirstElement(), context, false);
}

void CXmlObjectBase::FromXmlElement(const CElement* element, const CSerializationContext& context) {
    if (element == nullptr) throw CKvInvalidParamException("The element to read from may not be NULL");
    // What the context adds to documents is no part of the element.
    CSerializationContext writing;
    writing.SetSchemaType(context.GetSchemaType());
    writing.SetMaxElementDepth(context.GetMaxElementDepth());
    // Bytes in an encoding that they declare are read the same whatever the local code page is.
    const CBinaryData data = element->ToXmlStream(true, false, XmlEncoding_UTF8, EOLType_LF, writing);
    const std::string xml(reinterpret_cast<const char*>(data.GetData()), data.GetLength());
    FromXml(xml.c_str(), context);
}

void CXmlObjectBase::FromJsonFile(const char* fileName, const CSerializationContext& context) {
    internal::CEntryPoints::ReadJson(
        *this, context, [fileName](CXmlDocument& document) { document.BuildFromJsonFile(fileName); });
}

void CXmlObjectBase::FromJson(const wchar_t* json, const CSerializationContext& context) {
    internal::CEntryPoints::ReadJson(*this, context,
                                     [json](CXmlDocument& document) { document.BuildFromJson(json); });
}

void CXmlObjectBase::FromJson(const char* json, const CSerializationContext& context) {
    internal::CEntryPoints::ReadJson(*this, context,
                                     [json](CXmlDocument& document) { document.BuildFromJson(json); });
}

void CXmlObjectBase::ReadJsonText(std::string_view json, const CSerializationContext& context) {
    internal::CEntryPoints::ReadJson(*this, context,
                                     [json](CXmlDocument& document) { document.BuildFromJson(json); });
}

void CXmlObjectBase::FromJsonStream(std::istream& in, const CSerializationContext& context) {
    const std::string bytes = internal::ReadRest(in);
    FromJsonStream(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), context);
}

void CXmlObjectBase::FromJsonStream(const CBinaryData& data, const CSerializationContext& context) {
    FromJsonStream(data.GetData(), data.GetLength(), context);
}

void CXmlObjectBase::FromJsonStream(const unsigned char* data, std::size_t length,
                                    const CSerializationContext& context) {
    internal::CEntryPoints::ReadJson(*this, context, [data, length](CXmlDocument& document) {
        document.BuildFromJsonStream(data, length);
    });
}

}  // namespace KvXmlLib16
