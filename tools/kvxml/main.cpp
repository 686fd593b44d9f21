/// The kvxml command: converts documents without knowing their schema.
///
///     kvxml convert orders.xml.gz orders.xml --indent 2
///
/// Ends with 0 when all is done, 1 when a document or a file is refused, 2 on wrong usage.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "kvxml/base/exceptions.h"
#include "kvxml/version.h"
#include "tools/kvxml/encoded_stream.h"
#include "tools/kvxml/formats.h"
#include "tools/kvxml/output.h"
#include "tools/kvxml/progress.h"

namespace {

using namespace KvXmlLib16;
using tool::CFailure;

constexpr int kRefused = 1;
constexpr int kWrongUsage = 2;
constexpr int kMaximumIndent = 64;

struct Options {
    std::string input;
    std::string output;
    std::string from;
    std::string to;
    bool gzip = false;
    tool::Layout layout;
};

/// One line, whatever the message quotes.
std::string OneLine(const std::string& message) {
    std::string line;
    for (const char c : message) {
        if (c == '\n')
            line += "; ";
        else
            line += static_cast<unsigned char>(c) < ' ' || c == '\x7F' ? '?' : c;
    }
    return line;
}

/// Runs `action`; a failure is reported under the name of the file it is about.
template <class Action>
bool Succeeds(const std::string& name, const char* standardName, Action action) {
    std::string message;
    try {
        action();
        return true;
    } catch (const CKvException& e) {
        message = e.GetFullMessage();
    } catch (const std::bad_alloc&) {
        message = "not enough memory";
    } catch (const std::exception& e) {
        message = e.what();
    }
    tool::Progress().Clear();
    std::cerr << "kvxml: " << OneLine(name == "-" ? standardName : name) << ": " << OneLine(message)
              << std::endl;
    return false;
}

/// Sees every element that was read and keeps it.
bool CountElement(CXmlElement*) {
    constexpr std::uint32_t kStep = 4096;
    static std::uint32_t count = 0;
    if (++count % kStep == 0) tool::Progress().Advance(kStep);
    return false;
}

int Convert(const Options& options) {
    const tool::Format& from =
        options.from.empty() ? tool::FormatOf(options.input) : *tool::FindFormat(options.from);
    const tool::Format& to =
        options.to.empty() ? tool::FormatOf(options.output) : *tool::FindFormat(options.to);
    const CSerializationContext context;
    // Left to the end of the process, which is faster than to destroy it.
    static CXmlDocument* const document =
        new CXmlDocument(tool::Progress().IsOnTerminal() ? CountElement : nullptr, context);

    const auto read = [&] {
        tool::Progress().Start("Reading", "elements", 1);
        from.read(options.input, *document);
        if (document->GetDocumentElement() == nullptr) throw CFailure("no document element");
    };
    const auto write = [&] {
        tool::Progress().Start("Writing", "MB", 1000 * 1000);
        tool::COutput output(options.output, options.gzip || tool::IsGzipName(options.output));
        to.write(*document->GetDocumentElement(), output, options.layout, context);
        output.Commit();
    };
    const char* const input = "standard input";
    const char* const output = "standard output";
    const bool done = Succeeds(options.input, input, read) && Succeeds(options.output, output, write);
    tool::Progress().Clear();
    return done ? 0 : kRefused;
}

void AddConvert(CLI::App& app, Options& options) {
    CLI::App* const convert = app.add_subcommand("convert", "Read a document and write it in another form");
    const CLI::IsMember formats({"xml", "json", "fi"});
    convert->add_option("--from", options.from, "Format of INPUT (default: by its name, else xml)")
        ->check(formats);
    convert->add_option("--to", options.to, "Format of OUTPUT (default: by its name, else xml)")
        ->check(formats);
    CLI::Option* const compact =
        convert->add_flag("--compact", options.layout.compact, "Write without line ends and indentation");
    convert->add_option("--indent", options.layout.indent, "Blanks per level (default: one tab)")
        ->check(CLI::Range(0, kMaximumIndent))
        ->excludes(compact)
        ->default_str("");
    convert->add_flag("--gzip", options.gzip, "Compress OUTPUT, as a name that ends in .gz does");
    convert
        ->add_option("--encoding", options.layout.encoding,
                     "Encoding of OUTPUT: utf-8, utf-16 or another that has ASCII in it")
        ->check([](const std::string& name) {
            return tool::CEncoder::Knows(name) ? std::string() : "unknown or unsuitable encoding " + name;
        })
        ->capture_default_str();
    const auto named = [](const std::string& name) {
        return name.empty() ? std::string("the name is empty") : std::string();
    };
    convert->add_option("INPUT", options.input, "Document, plain or compressed; - for standard input")
        ->required()
        ->check(named);
    convert->add_option("OUTPUT", options.output, "File to write or replace; - for standard output")
        ->required()
        ->check(named);
}

/// Prints help, version or what is wrong with the command line.
int Exit(const CLI::App& app, const CLI::ParseError& e) {
    const int status = app.exit(e);
    std::cout.flush();
    if (status == 0 && std::cout) return 0;
    if (status == 0) std::cerr << "kvxml: standard output: cannot write" << std::endl;
    return status == 0 ? kRefused : kWrongUsage;
}

}  // namespace

int main(int argc, char** argv) {
    tool::PrepareProcess();
    Options options;
    CLI::App app("Converts XML documents between layouts, encodings and compressed forms.", "kvxml");
    app.set_version_flag("--version", "kvxml " KVXML_VERSION_STRING);
    app.require_subcommand(1);
    AddConvert(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return Exit(app, e);
    }
    return Convert(options);
}
