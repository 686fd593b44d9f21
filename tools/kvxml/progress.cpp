#include "tools/kvxml/progress.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>

namespace tool {

namespace {

constexpr std::chrono::milliseconds kPatience{1000};
constexpr std::chrono::milliseconds kInterval{200};

}  // namespace

CProgress::CProgress() : m_isEnabled(isatty(STDERR_FILENO) == 1), m_next(Clock::now() + kPatience) {}

void CProgress::Start(const char* work, const char* units, std::uint64_t unit) {
    m_work = work;
    m_units = units;
    m_unit = unit;
    m_count = 0;
}

void CProgress::Show() {
    const Clock::time_point now = Clock::now();
    if (now < m_next) return;
    m_next = now + kInterval;
    m_isShown = true;
    std::fprintf(stderr, "\r%s: %" PRIu64 " %s   ", m_work, m_count / m_unit, m_units);
}

void CProgress::Clear() noexcept {
    if (!m_isShown) return;
    m_isShown = false;
    std::fprintf(stderr, "\r%50s\r", "");
}

CProgress& Progress() {
    static CProgress progress;
    return progress;
}

}  // namespace tool
