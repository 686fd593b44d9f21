#include "examples/support/document_tool.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <system_error>

#include "kvxml/kvxml.h"

namespace examples {

namespace {

namespace fs = std::filesystem;
using KvXmlLib16::CKvException;
using KvXmlLib16::FormatString;

/// Where the document is written until it is complete: beside `output`, so that it can be renamed. Devices
/// and pipes are written directly.
class CPendingFile {
public:
    explicit CPendingFile(const fs::path& output) : m_output(output), m_written(output) {
        if (fs::exists(output) && !fs::is_regular_file(output)) return;
        if (fs::is_symlink(output)) m_output = fs::canonical(output);
        m_written = m_output;
        m_written += FormatString(".%08x.tmp", std::random_device()());
    }
    CPendingFile(const CPendingFile&) = delete;
    CPendingFile& operator=(const CPendingFile&) = delete;
    ~CPendingFile() {
        std::error_code ignored;
        if (m_written != m_output) fs::remove(m_written, ignored);
    }

    std::string Name() const { return m_written.string(); }
    void Commit() {
        if (m_written == m_output) return;
        fs::rename(m_written, m_output);
        m_written = m_output;
    }

private:
    fs::path m_output;
    fs::path m_written;
};

/// Runs `action`; a failure is reported under the name of the file it is about.
bool Succeeds(const std::string& program, const std::string& fileName, const std::function<void()>& action) {
    std::string message;
    try {
        action();
        return true;
    } catch (const CKvException& e) {
        message = e.GetFullMessage();
    } catch (const std::exception& e) {
        message = e.what();
    }
    std::cerr << program << ": " << fileName << ": " << message << '\n';
    return false;
}

}  // namespace

int RunDocumentTool(const std::string& program, const std::string& input, const std::string& output,
                    const DocumentSteps& steps) {
    if (!Succeeds(program, input, steps.read)) return 1;
    const auto write = [&] {
        CPendingFile file(output);
        steps.write(file.Name());
        file.Commit();
    };
    if (!output.empty() && !Succeeds(program, output, write)) return 1;
    steps.print();
    if (!std::cout) {
        std::cerr << program << ": cannot write to standard output\n";
        return 1;
    }
    return 0;
}

void ReadDocument(KvXmlLib16::CXmlObjectBase& object, const std::string& fileName,
                  const KvXmlLib16::CSerializationContext& context) {
    fs::path path(fileName);
    if (path.extension() == ".gz") path = path.stem();
    const bool isJson =
        path.extension() == ".json" || std::ifstream(fileName, std::ios::binary).peek() == '{';
    if (isJson) {
        object.FromJsonFile(fileName.c_str(), context);
    } else {
        object.FromXmlFile(fileName.c_str(), context);
    }
}

std::optional<int> ParseArguments(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? 0 : 2;
    }
    return std::nullopt;
}

}  // namespace examples
