// A line on the terminal while work takes long.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>

namespace nodus::tools {

// Shows nothing before a second has passed, nothing at all unless standard error is a terminal, and
// leaves no trace. For one thread at a time.
class Progress {
public:
    // total: the number of frames, or 0 when fraction says how far the work has come.
    Progress(std::uint64_t total, std::function<double()> fraction);
    ~Progress() { wipe(); }
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    void show(std::uint64_t done);
    void wipe();

    // Whether a line stands on the terminal now. For signal handlers, too.
    static bool isShown() noexcept;

private:
    using Clock = std::chrono::steady_clock;
    std::uint64_t m_total;
    std::function<double()> m_fraction;
    bool m_isTerminal;
    Clock::time_point m_start, m_next;
};

}  // namespace nodus::tools
