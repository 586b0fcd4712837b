// Collecting faults, and the words that they have in common.
#include "nodus/host/diagnostics.h"

#include <algorithm>
#include <system_error>

namespace nodus::host {

void Diagnostics::add(Fault const& fault)
{
    m_lines.insert(m_lines.end(), fault.lines().begin(), fault.lines().end());
}

void Diagnostics::throwIfAny() const
{
    if (!m_lines.empty())
        throw Fault(m_lines);
}

std::string systemError(int number) { return std::generic_category().message(number); }

std::string printable(std::string_view text)
{
    std::string line(text);
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    return line;
}

std::string alternatives(std::vector<std::string_view> const& names)
{
    constexpr std::size_t kMost = 8;
    std::string text;
    std::size_t const shown = std::min(names.size(), kMost);
    for (std::size_t i = 0; i < shown; ++i) {
        if (i != 0)
            text += i + 1 == names.size() ? " or " : ", ";
        text += names[i];
    }
    return names.size() > kMost ? text + ", ..." : text;
}

std::size_t editDistance(std::string_view a, std::string_view b, std::size_t limit)
{
    std::size_t const difference = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
    if (difference >= limit || a.size() > 200)
        return limit;
    auto const lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    std::vector<std::size_t> beforeLast(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::swap(beforeLast, last);
        std::swap(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            bool const same = lower(a[i - 1]) == lower(b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                lower(a[i - 2]) == lower(b[j - 1]))
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        if (*std::ranges::min_element(row) >= limit)
            return limit;
    }
    return std::min(row[b.size()], limit);
}

}  // namespace nodus::host
