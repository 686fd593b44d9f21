#include "kvxml/json/internal/json_token_list.h"

namespace KvXmlLib16::internal {

std::string CJsonTokenList::GetErrorPath() const {
    std::string path = "$";
    for (std::size_t level = 0; level < m_open.size(); ++level) {
        const Container& open = m_open[level];
        if (m_tokens[open.token].kind == Kind::Array) {
            path += '[' + std::to_string(open.items == 0 ? 0 : open.items - 1) + ']';
            continue;
        }
        // The last member's name; its value may be open itself.
        const std::size_t end = level + 1 < m_open.size() ? m_open[level + 1].token : m_tokens.size();
        std::string_view name;
        for (std::size_t at = open.token + 1; at < end; at = at < end ? m_tokens[at].next : end)
            name = m_tokens[at++].text;
        if (!name.empty()) path.append(1, '.').append(name);
    }
    return path;
}

}  // namespace KvXmlLib16::internal
