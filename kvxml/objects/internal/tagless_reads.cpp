#include "kvxml/objects/internal/tagless_reads.h"

#include <algorithm>
#include <limits>

#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::uint32_t kForGood = std::numeric_limits<std::uint32_t>::max();

thread_local constinit CTaglessReads* t_innermost = nullptr;

}  // namespace

CTaglessReads::CTaglessReads(CXmlElement& parent) noexcept : m_parent(parent), m_outer(t_innermost) {
    t_innermost = this;
}

CTaglessReads::~CTaglessReads() {
    t_innermost = m_outer;
}

CTaglessReads* CTaglessReads::Of(const CXmlElement* parent) noexcept {
    return t_innermost != nullptr && &t_innermost->m_parent == parent ? t_innermost : nullptr;
}

const CTaglessReads::Failure* CTaglessReads::Find(const void* member) const noexcept {
    // As many at most as the classes have members without a tag, which no document can change.
    const auto found = std::find_if(m_failures.begin(), m_failures.end(),
                                    [member](const Failure& failure) { return failure.member == member; });
    return found == m_failures.end() ? nullptr : &*found;
}

std::uint32_t CTaglessReads::PositionOf(const CXmlElement* child) {
    if (child == nullptr) return kForGood - 1;
    if (m_positions.empty()) {
        std::uint32_t position = 0;
        for (const CXmlElement* at = m_parent.GetFirstElement(); at != nullptr;
             at = at->GetNextSiblingElement())
            m_positions.emplace(at, position++);
    }
    const auto found = m_positions.find(child);
    return found == m_positions.end() ? kForGood : found->second;
}

bool CTaglessReads::IsInVain(const void* member, const CXmlElement* at) {
    const Failure* const failure = Find(member);
    if (failure == nullptr || failure->from == failure->until) return false;
    const std::uint32_t position = PositionOf(at);
    return position >= failure->from && position < failure->until;
}

void CTaglessReads::NoteFailure(const void* member, const CXmlElement* from, bool isIncomplete) {
    if (isIncomplete) {
        NoteRange(member, from, m_halt);
    } else if (!WasTried(member)) {
        m_failures.push_back({member, 0, 0});
    }
}

void CTaglessReads::NoteRange(const void* member, const CXmlElement* from, const CXmlElement* until) {
    Failure failure{member, 0, 0};
    if (until != from) {
        failure.from = PositionOf(from);
        failure.until = until == nullptr ? kForGood : PositionOf(until);
    }
    auto* const known = const_cast<Failure*>(Find(member));
    if (known == nullptr) {
        m_failures.push_back(failure);
    } else if (known->until == kForGood) {
        if (failure.until == kForGood) known->from = std::min(known->from, failure.from);
    } else {
        *known = failure;
    }
}

}  // namespace KvXmlLib16::internal
