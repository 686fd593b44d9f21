#include "kvxml/xml/line_layout.h"

#include <algorithm>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/xml/string_buffer.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::size_t kFewLevels = 16;
constexpr std::size_t kDeepest = 1024;

}  // namespace

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

/// The length of the indentation, for which there was no room yet, or which is too deep.
std::size_t CLineLayout::ExtendIndentation(std::size_t depth) {
    const std::size_t length = std::min(depth, kDeepest) * m_indentChars.size();
    if (length <= m_indentationLength) return length;
    const std::size_t levels = std::min(std::max(2 * depth, kFewLevels), kDeepest);
    std::string indentation;
    indentation.reserve(levels * m_indentChars.size() + CStringBuffer::kSlack);
    for (std::size_t i = 0; i < levels; ++i)
        indentation += m_indentChars;
    const std::size_t prepared = indentation.size();
    indentation.resize(prepared + CStringBuffer::kSlack);
    m_indentation = std::move(indentation);
    m_indentationLength = prepared;
    return length;
}

}  // namespace KvXmlLib16::internal
