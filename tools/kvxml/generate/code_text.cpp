// What the writers of all files share.
#include <algorithm>

#include "tools/kvxml/generate/code_writer.h"

namespace tool::generate {

namespace {

/// The words of the text in lines of at most `width` characters.
std::vector<std::string> Wrap(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    std::string line;
    std::size_t at = 0;
    const auto isBlank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
    while (at < text.size()) {
        while (at < text.size() && isBlank(text[at]))
            ++at;
        const std::size_t first = at;
        while (at < text.size() && !isBlank(text[at]))
            ++at;
        if (first == at) break;
        const std::string_view word = text.substr(first, at - first);
        if (!line.empty() && line.size() + 1 + word.size() > width) {
            lines.push_back(line);
            line.clear();
        }
        if (!line.empty()) line += ' ';
        line += word;
    }
    if (!line.empty()) lines.push_back(line);
    // A backslash at the end would take the next line into the comment.
    for (std::string& one : lines)
        if (one.back() == '\\') one += '.';
    return lines;
}

}  // namespace

std::vector<std::string> ListFiles(const CodeOptions& options) {
    std::vector<std::string> names = {options.name + "_fwd.h", options.name + ".h"};
    for (unsigned part = 1; part <= options.parts; ++part)
        names.push_back(options.name + (part == 1 ? "" : "_" + std::to_string(part)) + ".cpp");
    return names;
}

std::vector<GeneratedFile> WriteCode(const CCodeModel& model, const CodeOptions& options) {
    const std::vector<std::string> names = ListFiles(options);
    std::vector<GeneratedFile> files;
    files.push_back({names[0], WriteForwardHeader(model, options)});
    files.push_back({names[1], WriteHeader(model, options)});
    for (unsigned part = 0; part < options.parts; ++part)
        files.push_back({names[part + 2], WriteSource(model, options, part)});
    return files;
}

CCodeText::CCodeText(const CodeOptions& options) {
    Line("// " + options.banner);
}

void CCodeText::Include(const std::string& header) {
    Line("#include " + (header.front() == '<' ? header : "\"" + header + "\""));
}

void CCodeText::In(const std::string& scope) {
    if (scope == m_scope) return;
    if (!m_scope.empty()) Line("\n}  // namespace " + m_scope);
    if (!scope.empty()) Line("\nnamespace " + scope + " {");
    m_scope = scope;
}

void CCodeText::Document(const CAnnotation* annotation, const char* indent) {
    if (annotation == nullptr) return;
    const std::string front = std::string(indent) + "/// ";
    for (const CAnnotationItem& item : annotation->items) {
        if (!item.isDocumentation) continue;
        for (const std::string& line : Wrap(item.text, 108 - front.size()))
            Line(front + line);
    }
}

std::string CCodeText::Take() {
    In({});
    return std::move(m_text);
}

}  // namespace tool::generate
