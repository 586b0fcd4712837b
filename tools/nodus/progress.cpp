// The progress line.
#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <string>
#include <string_view>

namespace nodus::tools {

namespace {

constexpr std::string_view kWipe = "\r\x1b[K";
constinit std::atomic<bool> g_isShown = false;

// It is only a courtesy: when the terminal is gone, so be it.
void toTerminal(std::string_view text)
{
    [[maybe_unused]] ssize_t const written = ::write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace

Progress::Progress(std::uint64_t total, std::function<double()> fraction)
    : m_total(total), m_fraction(std::move(fraction)), m_isTerminal(::isatty(STDERR_FILENO) == 1),
      m_start(Clock::now()), m_next(m_start + std::chrono::seconds(1))
{
}

bool Progress::isShown() noexcept { return g_isShown; }

void Progress::show(std::uint64_t done)
{
    if (!m_isTerminal)
        return;
    auto const now = Clock::now();
    if (now < m_next)
        return;
    m_next = now + std::chrono::milliseconds(200);
    double const seconds = std::chrono::duration<double>(now - m_start).count();
    double const fraction =
        m_total != 0 ? static_cast<double>(done) / static_cast<double>(m_total) : m_fraction();
    std::string line = fmt::format("{}{} frames", kWipe, done);
    if (m_total != 0)
        line += fmt::format(" of {}", m_total);
    if (fraction > 0)
        line += fmt::format(", {:.0f} %", 100 * fraction);
    line += fmt::format(", {:.0f} frames/s", static_cast<double>(done) / seconds);
    toTerminal(line);
    g_isShown = true;
}

void Progress::wipe()
{
    if (g_isShown)
        toTerminal(kWipe);
    g_isShown = false;
}

}  // namespace nodus::tools
