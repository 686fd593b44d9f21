/// `kvxml convert`: reads a document and writes it in another layout, encoding, compression or format.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/kvxml/command.h"
#include "tools/kvxml/encoded_stream.h"
#include "tools/kvxml/formats.h"
#include "tools/kvxml/input.h"
#include "tools/kvxml/limits.h"
#include "tools/kvxml/messages.h"
#include "tools/kvxml/output.h"
#include "tools/kvxml/progress.h"
#include "tools/kvxml/usage.h"

namespace tool {

using namespace KvXmlLib16;

namespace {

constexpr int kMaximumIndent = 64;

struct Options {
    std::string input;
    std::string output;
    std::string from;
    std::string to;
    bool gzip = false;
    Layout layout;
    CSerializationContext context;
};

void AddOptions(CLI::App& parser, Options& options) {
    const CLI::IsMember formats({"xml", "json", "fi"});
    parser.add_option("--from", options.from, "Format of INPUT (default: by its name, else xml)")
        ->check(formats);
    parser.add_option("--to", options.to, "Format of OUTPUT (default: by its name, else xml)")
        ->check(formats);
    CLI::Option* const compact =
        parser.add_flag("--compact", options.layout.compact, "Write without line ends and indentation");
    parser.add_option("--indent", options.layout.indent, "Blanks per level (default: one tab)")
        ->check(CLI::Range(0, kMaximumIndent))
        ->excludes(compact)
        ->default_str("");
    parser.add_flag("--gzip", options.gzip, "Compress OUTPUT, as a name that ends in .gz does");
    parser
        .add_option("--encoding", options.layout.encoding,
                    "Encoding of OUTPUT: utf-8, utf-16 or another that has ASCII in it")
        ->check([](const std::string& name) {
            return CEncoder::Knows(name) ? std::string() : "unknown or unsuitable encoding " + name;
        })
        ->capture_default_str();
    AddLimitOptions(parser, options.context);
    const auto named = [](const std::string& name) {
        return name.empty() ? std::string("the name is empty") : std::string();
    };
    parser.add_option("INPUT", options.input, "Document, plain or compressed; - for standard input")
        ->required()
        ->check(named);
    parser.add_option("OUTPUT", options.output, "File to write or replace; - for standard output")
        ->required()
        ->check(named);
}

/// Sees every element that was read and keeps it.
bool CountElement(CXmlElement*) {
    constexpr std::uint32_t kStep = 4096;
    static std::uint32_t count = 0;
    if (++count % kStep == 0) Progress().Advance(kStep);
    return false;
}

void Read(const Options& options, CXmlDocument& document, const Format& from) {
    Progress().Start("Reading", "elements", 1);
    from.read(options.input, document);
    if (document.GetDocumentElement() == nullptr) throw CFailure("no document element");
}

/// Returns what there is to say about the output.
std::string Write(const Options& options, const CXmlDocument& document, const Format& to) {
    COutput output(options.output, options.gzip || IsGzipName(options.output));
    if (output.IsTerminal())
        Progress().Disable();
    else
        Progress().Start("Writing", "MB", 1000 * 1000);
    to.write(*document.GetDocumentElement(), output, options.layout, options.context);
    output.Commit();
    return output.GetRemark();
}

int Convert(Options& options) {
    const Format& from = options.from.empty() ? FormatOf(options.input) : *FindFormat(options.from);
    const Format& to = options.to.empty() ? FormatOf(options.output) : *FindFormat(options.to);
    if (from.prepare != nullptr) from.prepare(options.context);
    // Left to the end of the process, which is faster than to destroy it.
    static CXmlDocument* const document =
        new CXmlDocument(Progress().IsEnabled() ? CountElement : nullptr, options.context);

    const std::string outputName = OutputName(options.output);
    std::string remark;
    const bool done = Succeeds(InputName(options.input), [&] { Read(options, *document, from); }) &&
                      Succeeds(outputName, [&] { remark = Write(options, *document, to); });
    Progress().Clear();
    if (!remark.empty()) Say(outputName, remark);
    return done ? kDone : kRefused;
}

}  // namespace

int RunConvert(int argc, char** argv) {
    Options options;
    CLI::App parser("Reads a document and writes it in another layout, encoding, compression or format.",
                    "kvxml convert");
    AddOptions(parser, options);
    if (const std::optional<int> status = Parse(parser, argc, argv)) return *status;
    return Convert(options);
}

}  // namespace tool
