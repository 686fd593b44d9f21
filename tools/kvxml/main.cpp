/// The kvxml command: works on documents without classes of their schema.
///
///     kvxml convert orders.xml.gz orders.xml --indent 2
///
/// Ends with 0 when all is done, 1 when a document or a file is refused, 2 on wrong usage.
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/version.h"
#include "tools/kvxml/command.h"
#include "tools/kvxml/messages.h"
#include "tools/kvxml/output.h"
#include "tools/kvxml/usage.h"

namespace {

using namespace tool;

constexpr Command kCommands[] = {
    {"convert", "Read a document and write it in another form", RunConvert},
    {"generate", "Write C++ classes for a schema", RunGenerate},
    {"validate", "Judge documents by a schema, or a schema by itself", RunValidate},
};

const Command* FindCommand(std::string_view name) {
    for (const Command& command : kCommands) {
        if (name == command.name) return &command;
    }
    return nullptr;
}

int PrintHelp() {
    std::string text =
        "Works on XML documents and their other forms, JSON and Fast Infoset.\n"
        "Usage: kvxml COMMAND [OPTION]... [ARGUMENT]...\n"
        "       kvxml COMMAND --help\n"
        "\nCommands:\n";
    for (const Command& command : kCommands) {
        constexpr std::size_t kNameWidth = 12;
        std::string name = command.name;
        name.resize(kNameWidth, ' ');
        text += "  " + name + command.summary + "\n";
    }
    text +=
        "\nOptions:\n"
        "  -h, --help  Print this text\n"
        "  --version   Print the version\n";
    return Print(text);
}

/// What others call the options that this command has.
std::string FindOption(std::string_view word) {
    for (const std::string_view other : {"help", "-help", "-?", "-H", "/?", "/h", "/help"}) {
        if (word == other) return "--help";
    }
    for (const std::string_view other : {"version", "-version", "-V", "-v"}) {
        if (word == other) return "--version";
    }
    return FindMeant(word, {"--help", "--version"});
}

int RefuseFirst(std::string_view word, std::string_view next) {
    const char* const help = "kvxml --help";
    const bool isOption = !word.empty() && word[0] == '-';
    std::string meant = FindOption(word);
    if (meant == "--help" && FindCommand(next) != nullptr)
        meant = std::string(next) + " --help";
    else if (meant.empty() && !isOption) {
        std::vector<std::string> names;
        for (const Command& command : kCommands)
            names.emplace_back(command.name);
        meant = FindMeant(word, names);
    }
    if (!meant.empty()) meant = "kvxml " + meant;
    return RefuseWord(isOption ? "option" : "command", word, meant, help);
}

}  // namespace

int main(int argc, char** argv) {
    PrepareProcess();
    if (argc < 2) return RefuseUsage("a command is required", "kvxml --help");
    const std::string_view word = argv[1];
    if (const Command* const command = FindCommand(word)) return command->run(argc - 1, argv + 1);
    if (word == "--help" || word == "-h") return PrintHelp();
    if (word == "--version") return Print("kvxml " KVXML_VERSION_STRING "\n");
    return RefuseFirst(word, argc > 2 ? argv[2] : "");
}
