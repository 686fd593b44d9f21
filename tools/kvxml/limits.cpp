#include "tools/kvxml/limits.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

namespace tool {

using namespace KvXmlLib16;

namespace {

/// "8M": as the option takes it.
std::string SizeText(std::uint64_t size) {
    const char* units = "\0KMGT";
    while (size != 0 && size % 1024 == 0 && units[1] != '\0') {
        size /= 1024;
        ++units;
    }
    return std::to_string(size) + std::string(1, *units);
}

}  // namespace

void AddLimitOptions(CLI::App& parser, CSerializationContext& context) {
    const char* const group = "Limits of what is read (0: none)";
    const auto add = [&](const char* name, const char* meaning, auto get, auto set) {
        using Number = decltype((context.*get)());
        const std::string text =
            std::string(meaning) + " (default: " + std::to_string((context.*get)()) + ")";
        parser
            .add_option_function<Number>(
                name, [&context, set](const Number& value) { (context.*set)(value); }, text)
            ->type_name("N")
            ->group(group);
    };
    const auto addSize = [&](const char* name, const char* meaning, auto get, auto set) {
        const auto take = [&context, set](const std::uint64_t& value) {
            (context.*set)(static_cast<std::size_t>(
                std::min<std::uint64_t>(value, std::numeric_limits<std::size_t>::max())));
        };
        const std::string text = std::string(meaning) + " (default: " + SizeText((context.*get)()) + ")";
        CLI::AsSizeValue size(false);
        size.description("");
        parser.add_option_function<std::uint64_t>(name, take, text)
            ->transform(size)
            ->type_name("SIZE")
            ->group(group);
    };
    using Context = CSerializationContext;
    add("--max-depth", "Nested elements", &Context::GetMaxElementDepth, &Context::SetMaxElementDepth);
    addSize("--max-inflated", "Bytes that compressed input may inflate to", &Context::GetMaxInflatedSize,
            &Context::SetMaxInflatedSize);
    add("--max-inflation-ratio", "The same per compressed byte, once they are many",
        &Context::GetMaxInflationRatio, &Context::SetMaxInflationRatio);
    addSize("--max-expansion", "Bytes that entities, default attributes and table entries may add",
            &Context::GetMaxExpansion, &Context::SetMaxExpansion);
    add("--max-names", "Distinct names of elements and attributes", &Context::GetMaxDistinctNames,
        &Context::SetMaxDistinctNames);
}

}  // namespace tool
