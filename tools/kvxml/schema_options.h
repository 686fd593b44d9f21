/// Options that tell where schema documents are found, the same for all subcommands that read schemas.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kvxml/schema/reader/schema_loader.h"

namespace CLI {
class App;
}

namespace tool {

/// What is wrong with a "NAME=VALUE" on the command line; empty when nothing is. The name may be empty where
/// `mayBeNameless`.
std::string CheckPair(const std::string& text, bool mayBeNameless);
/// Name and value of such a text, parted at the last "=".
std::pair<std::string, std::string> ToPair(const std::string& text);

/// Adds the options --catalog, --map and --include-path. What is given on the command line is set in `load`,
/// which must outlive the parsing.
void AddSchemaOptions(CLI::App& parser, KvXmlLib16::CSchemaLoadOptions& load);

}  // namespace tool
