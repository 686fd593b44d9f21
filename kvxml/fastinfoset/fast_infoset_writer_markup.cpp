// Comments, processing instructions and raw text.
#include <algorithm>
#include <string>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/ascii.h"
#include "kvxml/fastinfoset/internal/writer_state.h"
#include "kvxml/objects/xml_tree_writer.h"
#include "kvxml/xml/internal/writer_context.h"
#include "kvxml/xml/internal/xml_name_check.h"
#include "kvxml/xml/xml_document.h"

namespace KvXmlLib16 {

using internal::FailFastInfoset;
using namespace internal::item;

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

}  // namespace

/// In front of a comment or processing instruction, which may stand outside of the document element as well.
void CFastInfosetWriter::StartItem() {
    Begun();
    if (GetCurrentContext() != nullptr) return StartContent();
    m_state->FlushHalf();
}

void CFastInfosetWriter::WriteComment(std::string_view text) {
    std::string apart;
    for (const char character : text) {
        if (character == '-' && !apart.empty() && apart.back() == '-') apart += ' ';
        apart += character;
    }
    if (!apart.empty() && apart.back() == '-') apart += ' ';
    StartItem();
    m_state->out.Append(kComment);
    m_state->text.PutOther(m_state->out, apart);
}

void CFastInfosetWriter::WriteInstruction(std::string_view text) {
    const std::size_t targetLength = std::min(text.find_first_of(kBlanks), text.size());
    const std::string_view target = text.substr(0, targetLength);
    if (!internal::IsXmlName(target, false) || internal::EqualsIgnoreAsciiCase(target, "xml"))
        FailFastInfoset("[" + std::string(target) + "] is not a valid target of a processing instruction.");
    text.remove_prefix(targetLength);
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    StartItem();
    State& state = *m_state;
    state.out.Append(kInstruction);
    state.PutIdentifier(state.out, state.targets, target);
    state.text.PutOther(state.out, text);
}

void CFastInfosetWriter::WriteRaw(std::string_view text) {
    if (!TryWriteMarkup(text)) FailFastInfoset("Raw text must be processing instructions and comments.");
}

void CFastInfosetWriter::WriteRawAfterSpace(std::string_view text) {
    if (TryWriteMarkup(text)) return;
    StartItem();
    // Without namespaces all declarations stay, also those for prefixes in values.
    CSerializationContext context;
    context.SetSchemaType(SchemaType_NoNamespaces);
    CXmlDocument document(context);
    try {
        document.LoadXml(std::string(text).c_str());
    } catch (const CKvException& e) {
        FailFastInfoset("Raw text must be an element. " + e.GetMessage());
    }
    const std::string defaultNamespace = GetCurrentContext() == nullptr
                                             ? GetDocumentScope().defaultNamespace
                                             : GetCurrentContext()->scope->defaultNamespace;
    SetDefaultNamespace({});
    m_state->isRaw = true;
    WriteXmlTree(*document.GetDocumentElement(), *this, context);
    m_state->isRaw = false;
    SetDefaultNamespace(defaultNamespace);
}

/// Writes processing instructions and comments. False, with nothing written, when there is anything else.
bool CFastInfosetWriter::TryWriteMarkup(std::string_view text) {
    const auto next = [&text](std::string_view& item) {
        text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
        const bool isComment = text.substr(0, 4) == "<!--";
        if (!isComment && text.substr(0, 2) != "<?") return false;
        const std::string_view end = isComment ? "-->" : "?>";
        const std::size_t at = text.find(end, isComment ? 4 : 2);
        if (at == text.npos) return false;
        item = text.substr(0, at);
        text.remove_prefix(at + end.size());
        return true;
    };
    std::string_view item;
    const std::string_view all = text;
    while (next(item)) {
    }
    if (!text.empty()) return false;
    text = all;
    while (next(item)) {
        if (item[1] == '!')
            WriteComment(item.substr(4));
        else
            WriteInstruction(item.substr(2));
    }
    return true;
}

}  // namespace KvXmlLib16
