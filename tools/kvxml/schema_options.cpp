#include "tools/kvxml/schema_options.h"

#include <CLI/CLI.hpp>

namespace tool {

std::string CheckPair(const std::string& text, bool mayBeNameless) {
    const std::size_t at = text.rfind('=');
    const bool isPair = at != std::string::npos && at + 1 != text.size() && (at != 0 || mayBeNameless);
    return isPair ? std::string() : "no NAME=VALUE: " + text;
}

std::pair<std::string, std::string> ToPair(const std::string& text) {
    const std::size_t at = text.rfind('=');
    return {text.substr(0, at), text.substr(at + 1)};
}

void AddSchemaOptions(CLI::App& parser, KvXmlLib16::CSchemaLoadOptions& load) {
    parser.add_option("--catalog", load.catalogs, "OASIS catalog for namespaces and locations")
        ->allow_extra_args(false);
    parser
        .add_option_function<std::vector<std::string>>(
            "--map",
            [&load](const std::vector<std::string>& texts) {
                for (const std::string& text : texts)
                    load.mappings.push_back(ToPair(text));
            },
            "NAMESPACE=FILE or LOCATION=FILE: where a schema document is to be had")
        ->allow_extra_args(false)
        ->check([](const std::string& text) { return CheckPair(text, false); });
    parser
        .add_option("--include-path", load.includePaths,
                    "Folder for schema documents that are not beside others")
        ->allow_extra_args(false);
}

}  // namespace tool
