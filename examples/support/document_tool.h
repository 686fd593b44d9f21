/// What the example programs have in common: read a document, write it back on request, print a summary.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>

#include "kvxml/objects/xml_object_base.h"

namespace examples {

/// Steps of one run. Failures are `KvXmlLib16::CKvException` or `std::exception`.
struct DocumentSteps {
    std::function<void()> read;
    /// Writes the whole document to the file of the given name.
    std::function<void(const std::string& fileName)> write;
    /// Prints to standard output.
    std::function<void()> print;
};

/// Reads, writes (unless `output` is empty), prints; stops at the first failure, which is reported to
/// standard error under the names of the program and the file. The output file appears, or is replaced, only
/// when it is complete. Returns the program's exit status: 0, or 1 when a step failed.
int RunDocumentTool(const std::string& program, const std::string& input, const std::string& output,
                    const DocumentSteps& steps);

/// Reads the object from the file, which is JSON by its name (.json, .json.gz) or by its first byte, else
/// XML.
void ReadDocument(KvXmlLib16::CXmlObjectBase& object, const std::string& fileName,
                  const KvXmlLib16::CSerializationContext& context);

/// Exit status of a program whose arguments settle the matter (help, or wrong usage: 2); empty to go on.
std::optional<int> ParseArguments(CLI::App& app, int argc, char** argv);

}  // namespace examples
