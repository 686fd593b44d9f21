#include "kvxml/fastinfoset/fast_infoset_context.h"

#include <utility>

#include "kvxml/fastinfoset/fast_infoset_vocabulary.h"

namespace KvXmlLib16 {

CFastInfosetContext::CFastInfosetContext() = default;
CFastInfosetContext::~CFastInfosetContext() = default;
CFastInfosetContext::CFastInfosetContext(const CFastInfosetContext&) = default;
CFastInfosetContext& CFastInfosetContext::operator=(const CFastInfosetContext&) = default;

void CFastInfosetContext::SetExternalVocabulary(
    std::shared_ptr<const CFastInfosetVocabulary> value) noexcept {
    m_externalVocabulary = std::move(value);
}

}  // namespace KvXmlLib16
