#include "kvxml/settings/json_context.h"

#include "kvxml/base/internal/c_text.h"

namespace KvXmlLib16 {

CJsonContext::CJsonContext() = default;
CJsonContext::~CJsonContext() = default;
CJsonContext::CJsonContext(const CJsonContext& other) = default;
CJsonContext& CJsonContext::operator=(const CJsonContext& other) = default;

void CJsonContext::SetRootElementName(const char* value) {
    m_rootElementName = internal::OrEmpty(value);
}

void CJsonContext::SetArrayItemName(const char* value) {
    m_arrayItemName = internal::OrEmpty(value);
}

}  // namespace KvXmlLib16
