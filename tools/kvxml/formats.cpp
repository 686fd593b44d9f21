#include "tools/kvxml/formats.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "kvxml/fastinfoset/fast_infoset_writer.h"
#include "kvxml/json/json_text_writer.h"
#include "kvxml/objects/xml_tree_writer.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_text_writer.h"
#include "tools/kvxml/encoded_stream.h"

namespace tool {

using namespace KvXmlLib16;

namespace {

constexpr std::size_t kFirstPiece = std::size_t{1} << 16;

std::vector<unsigned char> ReadStandardInput() {
    std::vector<unsigned char> data;
    std::size_t length = 0;
    for (;;) {
        if (data.size() - length < kFirstPiece) data.resize(data.size() * 2 + kFirstPiece);
        const ssize_t count = read(STDIN_FILENO, data.data() + length, data.size() - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw CFailure("cannot read", errno);
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
    }
    data.resize(length);
    return data;
}

/// Says what the host says where a regular file cannot be opened.
void CheckFile(const std::string& fileName) {
    struct stat status;
    if (stat(fileName.c_str(), &status) != 0) throw CFailure("", errno);
    if (S_ISDIR(status.st_mode)) throw CFailure("", EISDIR);
    if (faccessat(AT_FDCWD, fileName.c_str(), R_OK, AT_EACCESS) != 0) throw CFailure("", errno);
}

// --- XML ---------------------------------------------------------------------------------------------------

/// Fast Infoset too, which shows by its first bytes.
void ReadXml(const std::string& input, CXmlDocument& document) {
    if (input == "-") {
        const std::vector<unsigned char> data = ReadStandardInput();
        document.LoadXmlStream(data.data(), data.size());
    } else {
        CheckFile(input);
        document.Load(input.c_str());
    }
}

template <class Writer>
void SetLayout(Writer& writer, const Layout& layout) {
    writer.SetFormatted(!layout.compact);
    if (layout.indent >= 0) writer.SetIndentChars(std::string(static_cast<std::size_t>(layout.indent), ' '));
}

/// Keeps tabs in attribute values, which readers would turn into blanks if they were written as they are.
class CWriter : public CXmlTextWriter {
public:
    explicit CWriter(CEncodedStream& stream) : CXmlTextWriter(&stream), m_stream(stream) {}

    void WriteAttribute(std::string_view localName, std::string_view namespaceUri, std::string_view value,
                        ItemType type) override {
        if (value.find('\t') == std::string_view::npos) {
            CXmlTextWriter::WriteAttribute(localName, namespaceUri, value, type);
            return;
        }
        std::string marked;
        for (const char c : value) {
            if (c == '\t')
                marked += m_stream.GetTabMark();
            else
                marked += c;
        }
        CXmlTextWriter::WriteAttribute(localName, namespaceUri, marked, type);
    }

private:
    CEncodedStream& m_stream;
};

void WriteXml(const CXmlElement& root, COutput& output, const Layout& layout,
              const CSerializationContext& context) {
    CEncodedStream stream(output, layout.encoding);
    CWriter writer(stream);
    SetLayout(writer, layout);
    writer.BeginOutput();
    stream.Append(R"(<?xml version="1.0" encoding=")" + stream.GetDeclaredName() + R"("?>)");
    if (!layout.compact) stream.Append('\n');
    WriteXmlTree(root, writer, context);
    writer.EndDocument();
}

// --- JSON --------------------------------------------------------------------------------------------------

void ReadJson(const std::string& input, CXmlDocument& document) {
    if (input == "-") {
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
    writer.BeginOutput();
    WriteXmlTree(root, writer, context);
    writer.EndDocument();
    const CBinaryData document = writer.TakeDocument();
    output.Write({reinterpret_cast<const char*>(document.GetData()), document.GetLength()});
}

// -----------------------------------------------------------------------------------------------------------

constexpr Format kFormats[] = {
    {"xml", {".xml", ""}, ReadXml, WriteXml},
    {"json", {".json", ""}, ReadJson, WriteJson},
    {"fi", {".fi", ".finf"}, ReadXml, WriteFastInfoset},
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
