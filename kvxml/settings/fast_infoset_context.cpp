#include "kvxml/settings/fast_infoset_context.h"

#include <algorithm>
#include <utility>

#include "kvxml/settings/fast_infoset_vocabulary.h"

namespace KvXmlLib16 {

CFastInfosetContext::CFastInfosetContext() = default;
CFastInfosetContext::~CFastInfosetContext() = default;
CFastInfosetContext::CFastInfosetContext(const CFastInfosetContext&) = default;
CFastInfosetContext& CFastInfosetContext::operator=(const CFastInfosetContext&) = default;

void CFastInfosetContext::SetExternalVocabulary(
    std::shared_ptr<const CFastInfosetVocabulary> value) noexcept {
    m_externalVocabulary = std::move(value);
}

void CFastInfosetContext::AddKnownVocabulary(std::shared_ptr<const CFastInfosetVocabulary> value) {
    if (value == nullptr) return;
    auto& known = m_knownVocabularies;
    known.erase(std::remove_if(known.begin(), known.end(),
                               [&](const auto& other) { return other->GetUri() == value->GetUri(); }),
                known.end());
    known.push_back(std::move(value));
}

std::shared_ptr<const CFastInfosetVocabulary> CFastInfosetContext::FindVocabulary(
    std::string_view uri) const {
    for (const auto& vocabulary : m_knownVocabularies) {
        if (vocabulary->GetUri() == uri) return vocabulary;
    }
    const bool isWritten = m_externalVocabulary != nullptr && m_externalVocabulary->GetUri() == uri;
    return isWritten ? m_externalVocabulary : nullptr;
}

}  // namespace KvXmlLib16
