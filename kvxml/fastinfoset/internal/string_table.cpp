#include "kvxml/fastinfoset/internal/string_table.h"

#include <chrono>
#include <exception>
#include <random>
#include <utility>

namespace KvXmlLib16::internal {

CTextHash CTextHash::Get() {
    static const CTextHash hash = [] {
        CTextHash made;
        try {
            std::random_device device;
            const auto draw = [&device] { return std::uint64_t{device()} << 32 | device(); };
            made.m_first = draw();
            made.m_second = draw();
        } catch (const std::exception&) {  // a host without a source of randomness
            const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
            made.m_first = static_cast<std::uint64_t>(now) * 0x9E3779B97F4A7C15U;
            made.m_second = ~made.m_first * 0xD6E8FEB86659FD93U;
        }
        return made;
    }();
    return hash;
}

void CIndexSlots::Grow() {
    std::vector<Slot> larger(m_slots.size() * 2);
    const std::size_t mask = larger.size() - 1;
    for (const Slot& slot : m_slots) {
        if (slot.number == 0) continue;
        std::size_t at = slot.hash & mask;
        while (larger[at].number != 0)
            at = (at + 1) & mask;
        larger[at] = slot;
    }
    m_slots = std::move(larger);
}

}  // namespace KvXmlLib16::internal
