#include "kvxml/json/internal/json_token_list.h"

namespace KvXmlLib16::internal {

std::string CJsonTokenList::GetErrorPath() const {
    std::string path = "$";
    for (std::size_t level = 0; level < m_open.size(); ++level) {
        const bool isInnermost = level + 1 == m_open.size();
        const bool isObject = m_tokens[m_open[level]].kind == Kind::Object;
        std::string_view name;
        std::size_t items = 0;
        for (std::size_t at = m_open[level] + 1; at < m_tokens.size(); at = m_tokens[at].next) {
            ++items;
            if (isObject) name = m_tokens[at++].text;
            if (at == m_tokens.size() || (!isInnermost && at == m_open[level + 1])) break;
        }
        if (!isObject) {
            path += '[' + std::to_string(items == 0 ? 0 : items - 1) + ']';
        } else if (!name.empty()) {
            path.append(1, '.').append(name);
        }
    }
    return path;
}

}  // namespace KvXmlLib16::internal
