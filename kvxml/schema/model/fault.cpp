#include "kvxml/schema/model/fault.h"

#include <utility>

namespace KvXmlLib16 {

std::string ToText(const CFault& fault) {
    std::string text = fault.file;
    if (fault.line != 0) text += (text.empty() ? "" : ":") + std::to_string(fault.line);
    if (fault.line != 0 && fault.column != 0) text += ":" + std::to_string(fault.column);
    if (!text.empty()) text += ": ";
    text += fault.message;
    if (!fault.constraint.empty()) text += " (" + fault.constraint + ")";
    return text;
}

void CFaultList::Add(CFault fault) {
    ++m_count;
    if (m_limit == 0 || m_faults.size() < m_limit) m_faults.push_back(std::move(fault));
}

void CFaultList::Clear() noexcept {
    m_count = 0;
    m_faults.clear();
}

}  // namespace KvXmlLib16
