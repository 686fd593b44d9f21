#include "kvxml/xml/line_layout.h"

#include <algorithm>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/xml/string_buffer.h"

namespace KvXmlLib16::internal {

CLineLayout::CLineLayout() = default;
CLineLayout::~CLineLayout() = default;

void CLineLayout::SetEOL(EOLType eol) {
    if (eol != EOLType_CRLF && eol != EOLType_LF) throw CKvException("Invalid EOL type.");
    m_eol = eol;
    m_eolLength = eol == EOLType_CRLF ? 2 : 1;
    m_eolText[0] = eol == EOLType_CRLF ? '\r' : '\n';
    m_eolText[1] = '\n';
}

void CLineLayout::SetIndentChars(std::string_view indentChars) {
    m_indentChars = indentChars;
    m_indentation.clear();
    m_indentationLength = 0;
}

void CLineLayout::ExtendIndentation(std::size_t length) {
    std::size_t wanted = std::max<std::size_t>(2 * length, 64);
    std::string indentation;
    indentation.reserve(wanted + m_indentChars.size() + CStringBuffer::kSlack);
    while (indentation.size() < wanted)
        indentation += m_indentChars;
    wanted = indentation.size();
    indentation.resize(wanted + CStringBuffer::kSlack);
    m_indentation = std::move(indentation);
    m_indentationLength = wanted;
}

}  // namespace KvXmlLib16::internal
