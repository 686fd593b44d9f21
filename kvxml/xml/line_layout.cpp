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

void CLineLayout::SetMaxIndentedDepth(std::size_t depth) {
    m_maxIndentedDepth = depth;
    m_indentation.clear();
    m_indentationLength = 0;
}

/// Makes the indentation that long, as far as it may be, and returns how long it is to be.
std::size_t CLineLayout::ExtendIndentation(std::size_t length) {
    const std::size_t unit = m_indentChars.size();  // not 0, for the length is more than what there is
    const std::size_t most = m_maxIndentedDepth > length / unit ? length : m_maxIndentedDepth * unit;
    if (most <= m_indentationLength) return most;
    std::size_t levels = std::max<std::size_t>(2 * most, 64) / unit + 1;
    levels = std::min(levels, m_maxIndentedDepth);
    std::string indentation;
    indentation.reserve(levels * unit + CStringBuffer::kSlack);
    for (std::size_t level = 0; level < levels; ++level)
        indentation += m_indentChars;
    m_indentationLength = indentation.size();
    indentation.resize(m_indentationLength + CStringBuffer::kSlack);
    m_indentation = std::move(indentation);
    return most;
}

}  // namespace KvXmlLib16::internal
