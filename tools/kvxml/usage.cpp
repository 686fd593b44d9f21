#include "tools/kvxml/usage.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>

#include "tools/kvxml/messages.h"

namespace tool {

namespace {

// No name is longer; longer words are misspellings of none.
constexpr std::size_t kLongestName = 40;
constexpr std::size_t kShortestBeginning = 2;

/// How many characters are to be added, removed, changed or swapped with the next to make `a` out of `b`.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> rows(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                rows[i][j] = i + j;
                continue;
            }
            std::size_t best = rows[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            best = std::min({best, rows[i - 1][j] + 1, rows[i][j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                best = std::min(best, rows[i - 2][j - 2] + 1);
            rows[i][j] = best;
        }
    }
    return rows[a.size()][b.size()];
}

std::vector<std::string> OptionNames(const CLI::App& parser) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : parser.get_options()) {
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

int RefuseExtra(const CLI::App& parser, const std::string& extra) {
    const std::string help = parser.get_name() + " --help";
    if (extra.size() < 2 || extra[0] != '-') return RefuseUsage("unexpected argument '" + extra + "'", help);
    const std::string option = extra.substr(0, extra.find('='));
    return RefuseWord("option", option, FindMeant(option, OptionNames(parser)), help);
}

}  // namespace

std::string FindMeant(std::string_view word, const std::vector<std::string>& names) {
    const std::size_t start = std::min(word.find_first_not_of('-'), word.size());
    if (word.size() > kLongestName || word.size() - start < kShortestBeginning) return std::string();
    std::string meant;
    std::size_t nearest = (word.size() - start) / 3 + 1;
    for (const std::string& name : names) {
        const bool isBeginning = name.compare(0, word.size(), word) == 0;
        const std::size_t distance = isBeginning ? 0 : Distance(word, name);
        if (distance >= nearest) continue;
        nearest = distance;
        meant = name;
    }
    return meant;
}

int RefuseUsage(const std::string& problem, const std::string& help) {
    Say(problem + "; see '" + help + "'");
    return kWrongUsage;
}

int RefuseWord(const std::string& kind, std::string_view word, const std::string& meant,
               const std::string& help) {
    const std::string problem = "unknown " + kind + " '" + Printable(word) + "'";
    if (meant.empty()) return RefuseUsage(problem, help);
    Say(problem + "; did you mean '" + meant + "'?");
    return kWrongUsage;
}

std::optional<int> Parse(CLI::App& parser, int argc, char** argv) {
    try {
        parser.parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::CallForHelp&) {
        return Print(parser.help());
    } catch (const CLI::ParseError& e) {
        const std::vector<std::string> extras = parser.remaining();
        if (!extras.empty()) return RefuseExtra(parser, extras.front());
        return RefuseUsage(e.what(), parser.get_name() + " --help");
    }
}

}  // namespace tool
