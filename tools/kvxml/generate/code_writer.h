/// Texts of the files that `kvxml generate` makes.
#pragma once

#include <string>
#include <vector>

#include "tools/kvxml/generate/code_model.h"

namespace tool::generate {

struct GeneratedFile {
    std::string name;  ///< without a folder
    std::string text;
};

/// The names of the files, in the order of WriteCode: forward declarations, classes, sources.
std::vector<std::string> ListFiles(const CodeOptions& options);
/// All files. The same plan and options give the same bytes.
std::vector<GeneratedFile> WriteCode(const CCodeModel& model, const CodeOptions& options);

std::string WriteForwardHeader(const CCodeModel& model, const CodeOptions& options);
std::string WriteHeader(const CCodeModel& model, const CodeOptions& options);
/// The source `part` (from 0) of as many as the options ask for.
std::string WriteSource(const CCodeModel& model, const CodeOptions& options, unsigned part);

/// Collects lines, with the namespaces that they stand in.
class CCodeText {
public:
    explicit CCodeText(const CodeOptions& options);
    void Line(const std::string& line = {}) { m_text += line + '\n'; }
    void Include(const std::string& header);
    /// The lines that follow stand in this namespace ("A::B"); empty: in none.
    void In(const std::string& scope);
    /// A comment of the schema's documentation; nothing when there is none.
    void Document(const CAnnotation* annotation, const char* indent);
    std::string Take();

private:
    std::string m_text;
    std::string m_scope;
};

}  // namespace tool::generate
