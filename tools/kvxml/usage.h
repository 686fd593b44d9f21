/// Command lines: reading them, and saying what is wrong with them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace tool {

/// The name that `word` begins, or that it differs from by a slip or two; empty when there is none.
std::string FindMeant(std::string_view word, const std::vector<std::string>& names);

/// Says what is wrong, and where help is: "kvxml --help". Returns the status to end with.
int RefuseUsage(const std::string& problem, const std::string& help);
/// The same for a word that is none of the known ones; `meant` is what to use instead and may be empty.
int RefuseWord(const std::string& kind, std::string_view word, const std::string& meant,
               const std::string& help);

/// Reads the options and arguments of a subcommand, whose parser is called "kvxml convert". Returns the
/// status to end with when that is all, because help was asked for or something is wrong.
std::optional<int> Parse(CLI::App& parser, int argc, char** argv);

}  // namespace tool
