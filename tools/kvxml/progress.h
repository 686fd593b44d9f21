/// The line on a terminal that shows how far long work has come.
#pragma once

#include <chrono>
#include <cstdint>

namespace tool {

/// Shows nothing when standard error is no terminal, and nothing for work that is done at once.
class CProgress {
public:
    CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;
    ~CProgress() { Clear(); }

    bool IsEnabled() const noexcept { return m_isEnabled; }
    /// Shows nothing from now on.
    void Disable() noexcept {
        Clear();
        m_isEnabled = false;
    }
    /// A new kind of work begins: "Reading", in units of "elements", `unit` to one that is shown.
    void Start(const char* work, const char* units, std::uint64_t unit);
    /// Cheap enough for every few thousand steps.
    void Advance(std::uint64_t count) {
        m_count += count;
        if (m_isEnabled) Show();
    }
    /// Removes the line, so that a message can take its place.
    void Clear() noexcept;

private:
    using Clock = std::chrono::steady_clock;

    void Show();

    bool m_isEnabled;
    bool m_isShown = false;
    const char* m_work = "";
    const char* m_units = "";
    std::uint64_t m_unit = 1;
    std::uint64_t m_count = 0;
    Clock::time_point m_next;
};

/// The one of the process.
CProgress& Progress();

}  // namespace tool
