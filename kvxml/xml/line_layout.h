/// Line ends and indentation of the text writers.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/settings/eol_type.h"

namespace KvXmlLib16::internal {

/// Keeps what a line begins and ends with ready to be copied. `Put...` functions write into room of at least
/// what is put, with 16 bytes after it that may be overwritten, and return the end of what they put.
class KVXML_EXPORT CLineLayout {
public:
    /// The longest line end.
    static constexpr std::size_t kLineEndLength = 2;

    CLineLayout();
    ~CLineLayout();
    CLineLayout(const CLineLayout&) = delete;
    CLineLayout& operator=(const CLineLayout&) = delete;

    /// CKvException "Invalid EOL type." for anything that is no `EOLType`.
    void SetEOL(EOLType eol);
    EOLType GetEOL() const noexcept { return m_eol; }
    /// Indentation of one level; a tab unless set.
    void SetIndentChars(std::string_view indentChars);
    const std::string& GetIndentChars() const noexcept { return m_indentChars; }
    /// Levels further inside are indented like this one; default 1,024, since output would else grow with the
    /// square of the depth.
    void SetMaxIndentedDepth(std::size_t depth);

    std::string_view LineEnd() const noexcept { return {m_eolText, m_eolLength}; }
    char* PutLineEnd(char* out) const noexcept {
        out[0] = m_eolText[0];
        out[1] = m_eolText[1];
        return out + m_eolLength;
    }
    /// Length of the indentation of `depth` levels, which `PutIndentation` can put from now on.
    std::size_t PrepareIndentation(std::size_t depth) {
        const std::size_t length = depth * m_indentChars.size();
        return length > m_indentationLength ? ExtendIndentation(length) : length;
    }
    char* PutIndentation(char* out, std::size_t length) const noexcept {
        const char* const blanks = m_indentation.data();
        for (std::size_t done = 0; done < length; done += 16)
            std::memcpy(out + done, blanks + done, 16);
        return out + length;
    }

private:
    std::size_t ExtendIndentation(std::size_t length);

    EOLType m_eol = EOLType_LF;
    std::size_t m_eolLength = 1;
    char m_eolText[kLineEndLength] = {'\n', '\n'};
    std::string m_indentChars = "\t";
    std::string m_indentation;  // m_indentChars repeated, and slack after what is used of it
    std::size_t m_indentationLength = 0;
    std::size_t m_maxIndentedDepth = 1024;
};

}  // namespace KvXmlLib16::internal
