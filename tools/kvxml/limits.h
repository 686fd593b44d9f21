/// Options for the limits against hostile input, the same for all subcommands that read documents.
#pragma once

#include "kvxml/settings/serialization_context.h"

namespace CLI {
class App;
}

namespace tool {

/// Adds the options. What is given on the command line is set in the context, which must outlive the parsing.
void AddLimitOptions(CLI::App& parser, KvXmlLib16::CSerializationContext& context);

}  // namespace tool
