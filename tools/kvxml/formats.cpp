#include "tools/kvxml/formats.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "kvxml/fastinfoset/fast_infoset_writer.h"
#include "kvxml/json/json_text_writer.h"
#include "kvxml/objects/xml_tree_writer.h"
#include "kvxml/settings/json_context.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_text_writer.h"
#include "tools/kvxml/encoded_stream.h"
#include "tools/kvxml/input.h"
#include "tools/kvxml/messages.h"

namespace tool {

using namespace KvXmlLib16;

namespace {

// --- XML ---------------------------------------------------------------------------------------------------

/// Fast Infoset too, which shows by its first bytes.
void ReadXml(const std::string& input, CXmlDocument& document) {
    if (IsStandardInput(input)) {
        const std::vector<unsigned char> data = ReadStandardInput();
        document.LoadXmlStream(data.data(), data.size());
    } else {
        CheckFile(input);
        document.Load(input.c_str());
    }
}

/// Indentation grows to so many levels or characters, so that it does not make up the greater part of deep
/// documents.
constexpr std::uint32_t kMostIndentedLevels = 64;
constexpr std::uint32_t kLongestIndentation = 256;

template <class Writer>
void SetLayout(Writer& writer, const Layout& layout) {
    writer.SetFormatted(!layout.compact);
    if (layout.indent >= 0) writer.SetIndentChars(std::string(static_cast<std::size_t>(layout.indent), ' '));
    const auto perLevel = static_cast<std::uint32_t>(std::max(layout.indent, 1));
    writer.SetMaxIndentedDepth(std::min(kMostIndentedLevels, kLongestIndentation / perLevel));
}

void WriteXml(const CXmlElement& root, COutput& output, const Layout& layout,
              const CSerializationContext& context) {
    CEncodedStream stream(output, layout.encoding);
    CXmlTextWriter writer(&stream);
    writer.SetLossless(true);
    SetLayout(writer, layout);
    writer.BeginOutput();
    stream.Append(R"(<?xml version="1.0" encoding=")" + stream.GetDeclaredName() + R"("?>)");
    if (!layout.compact) stream.Append('\n');
    WriteXmlTree(root, writer, context);
    writer.EndDocument();
}

// --- JSON --------------------------------------------------------------------------------------------------

/// Strings of JSON stand for themselves; there is no markup in them.
void PrepareJson(CSerializationContext& context) {
    context.GetJsonContext().SetExactStrings(true);
}

void ReadJson(const std::string& input, CXmlDocument& document) {
    if (IsStandardInput(input)) {
        const std::vector<unsigned char> data = ReadStandardInput();
        document.BuildFromJsonStream(data.data(), data.size());
    } else {
        CheckFile(input);
        document.BuildFromJsonFile(input.c_str());
    }
}

void WriteJson(const CXmlElement& root, COutput& output, const Layout& layout,
               const CSerializationContext& context) {
    CEncodedStream stream(output, layout.encoding);
    // References to characters, as other encodings need them, are XML's.
    if (stream.GetEncoding() == XmlEncoding_None)
        throw CFailure("JSON can be written in utf-8 and utf-16 only");
    CJsonTextWriter writer(&stream);
    writer.SetEscapeStrings(true);
    SetLayout(writer, layout);
    writer.BeginOutput();
    WriteXmlTree(root, writer, context);
    writer.EndDocument();
}

// --- Fast Infoset ------------------------------------------------------------------------------------------

void WriteFastInfoset(const CXmlElement& root, COutput& output, const Layout&,
                      const CSerializationContext& context) {
    CFastInfosetWriter writer(context.GetFIContext());
    writer.SetLossless(true);
    writer.BeginOutput();
    WriteXmlTree(root, writer, context);
    writer.EndDocument();
    const CBinaryData document = writer.TakeDocument();
    output.Write({reinterpret_cast<const char*>(document.GetData()), document.GetLength()});
}

// -----------------------------------------------------------------------------------------------------------

constexpr Format kFormats[] = {
    {"xml", {".xml", ""}, nullptr, ReadXml, WriteXml},
    {"json", {".json", ""}, PrepareJson, ReadJson, WriteJson},
    {"fi", {".fi", ".finf"}, nullptr, ReadXml, WriteFastInfoset},
};

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

const Format* FindFormat(std::string_view option) {
    for (const Format& format : kFormats) {
        if (option == format.option) return &format;
    }
    return nullptr;
}

bool IsGzipName(std::string_view fileName) {
    return EndsWith(fileName, ".gz");
}

const Format& FormatOf(std::string_view fileName) {
    if (IsGzipName(fileName)) fileName.remove_suffix(3);
    for (const Format& format : kFormats) {
        for (const std::string_view suffix : format.suffixes) {
            if (!suffix.empty() && EndsWith(fileName, suffix)) return format;
        }
    }
    return kFormats[0];
}

}  // namespace tool
