#include "kvxml/settings/json_context.h"

namespace KvXmlLib16 {

CJsonContext::CJsonContext() = default;
CJsonContext::~CJsonContext() = default;
CJsonContext::CJsonContext(const CJsonContext& other) = default;
CJsonContext& CJsonContext::operator=(const CJsonContext& other) = default;

}  // namespace KvXmlLib16
