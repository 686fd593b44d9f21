#include "kvxml/fastinfoset/fast_infoset_context.h"

namespace KvXmlLib16 {

CFastInfosetContext::CFastInfosetContext() = default;
CFastInfosetContext::~CFastInfosetContext() = default;
CFastInfosetContext::CFastInfosetContext(const CFastInfosetContext&) = default;
CFastInfosetContext& CFastInfosetContext::operator=(const CFastInfosetContext&) = default;

}  // namespace KvXmlLib16
