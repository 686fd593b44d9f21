/// `kvxml generate`: classes from a schema.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kvxml/schema/binding/binding_plan.h"
#include "kvxml/schema/schema.h"
#include "kvxml/version.h"
#include "tools/kvxml/command.h"
#include "tools/kvxml/generate/code_model.h"
#include "tools/kvxml/generate/code_writer.h"
#include "tools/kvxml/messages.h"
#include "tools/kvxml/output.h"
#include "tools/kvxml/schema_options.h"
#include "tools/kvxml/usage.h"

namespace tool {

using namespace KvXmlLib16;

namespace {

struct Options {
    std::vector<std::string> schemas;
    CSchemaLoadOptions load;
    std::vector<std::string> namespaces;  // URI=A::B
    std::vector<std::string> renames;     // PATH=NAME
    std::string output;
    std::string depfile;
    bool list = false;
    bool quiet = false;
    generate::CodeOptions code;
};

std::vector<std::pair<std::string, std::string>> ToPairs(const std::vector<std::string>& texts) {
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const std::string& text : texts)
        pairs.push_back(ToPair(text));
    return pairs;
}

void AddOptions(CLI::App& parser, Options& options) {
    parser.add_option("SCHEMA", options.schemas, "Schema documents")->required();
    parser.add_option("--output,-o", options.output, "Folder for the files; made when it is not there")
        ->required();
    parser.add_option("--name", options.code.name,
                      "Name of the files, without an ending; otherwise that of the first schema");
    parser
        .add_option("--namespace", options.namespaces,
                    "URI=A::B: the C++ namespace for a target namespace; an empty URI stands for none")
        ->allow_extra_args(false)
        ->check([](const std::string& text) { return CheckPair(text, true); });
    parser
        .add_option("--rename", options.renames,
                    "PATH=NAME: another name for a type, member (TYPE/NAME, TYPE/@NAME) or value")
        ->allow_extra_args(false)
        ->check([](const std::string& text) { return CheckPair(text, false); });
    parser.add_option("--parts", options.code.parts, "Number of sources, for schemas of hundreds of types")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    parser.add_flag("--list", options.list, "Print the files that would be written, and write none");
    parser.add_option("--depfile", options.depfile, "Write what the files depend on, for Make and Ninja");
    AddSchemaOptions(parser, options.load);
    parser.add_flag("--quiet,-q", options.quiet, "Say nothing of constructs that are carried with a loss");
}

std::string FileName(std::string_view path) {
    return std::filesystem::path(std::string(path)).filename().string();
}

void Tell(const CFault& fault, const char* kind) {
    CFault told = fault;
    told.message = kind + fault.message;
    Say(Printable(ToText(told)));
}

/// Whether the file has the text already, so that nothing that depends on it is built again.
bool IsUnchanged(const std::filesystem::path& path, const std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    const std::string old((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return old == text;
}

void WriteFile(const std::filesystem::path& path, const std::string& text) {
    if (IsUnchanged(path, text)) return;
    COutput output(path.string(), false);
    output.Write(text);
    output.Commit();
}

/// A name as makefiles have it.
std::string EscapedForMake(const std::string& name) {
    std::string escaped;
    for (const char c : name) {
        if (c == ' ' || c == '#') escaped += '\\';
        if (c == '$') escaped += '$';
        escaped += c;
    }
    return escaped;
}

std::string DepfileText(const std::vector<std::string>& files, const CSchemaSet& schema) {
    std::string text;
    for (const std::string& file : files)
        text += (text.empty() ? "" : " ") + EscapedForMake(file);
    text += ":";
    for (const CSchemaDocument* const document : schema.GetDocuments())
        if (std::filesystem::exists(std::string(document->file)))
            text += " \\\n  " + EscapedForMake(std::string(document->file));
    return text + "\n";
}

int Generate(Options& options) {
    CSchemaLoader loader(options.load);
    for (const std::string& schema : options.schemas)
        loader.AddFile(schema);
    CFaultList faults(options.load.maxFaults);
    CFaultList remarks;
    const std::shared_ptr<const CSchemaSet> schema = loader.Load(faults, &remarks);
    if (schema == nullptr) {
        for (const CFault& fault : faults.GetFaults())
            Tell(fault, "");
        return kRefused;
    }
    const std::shared_ptr<const CBindingPlan> plan = CBindingPlan::Make(schema);
    if (!options.quiet) {
        for (const CFault& remark : remarks.GetFaults())
            Tell(remark, "note: ");
        for (const CFault& loss : plan->GetLosses())
            Tell(loss, "warning: ");
    }
    const generate::CCodeModel model(plan, options.code);
    for (const std::string& path : model.GetUnusedRenames())
        Say("--rename " + path + ": the schema has nothing of that path");
    std::vector<std::string> written;
    std::filesystem::create_directories(options.output);
    for (const generate::GeneratedFile& file : generate::WriteCode(model, options.code)) {
        const std::filesystem::path path = std::filesystem::path(options.output) / file.name;
        WriteFile(path, file.text);
        written.push_back(path.string());
    }
    if (!options.depfile.empty()) WriteFile(options.depfile, DepfileText(written, *schema));
    return kDone;
}

}  // namespace

int RunGenerate(int argc, char** argv) {
    Options options;
    CLI::App parser("Writes C++ classes for the types and elements of a schema.", "kvxml generate");
    AddOptions(parser, options);
    if (const std::optional<int> status = Parse(parser, argc, argv)) return *status;
    options.code.namespaces = ToPairs(options.namespaces);
    options.code.renames = ToPairs(options.renames);
    if (options.code.name.empty())
        options.code.name = std::filesystem::path(options.schemas.front()).stem().string();
    options.code.banner = "Made by kvxml generate " KVXML_VERSION_STRING " from";
    for (const std::string& schema : options.schemas)
        options.code.banner += " " + FileName(schema);
    options.code.banner += ". Do not edit.";
    if (options.list) {
        std::string text;
        for (const std::string& name : generate::ListFiles(options.code))
            text += (std::filesystem::path(options.output) / name).string() + "\n";
        return Print(text);
    }
    int status = kRefused;
    Succeeds(options.schemas.front(), [&] { status = Generate(options); });
    return status;
}

}  // namespace tool
