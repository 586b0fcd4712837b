// Collecting faults, and the words that they have in common.
#include "nodus/host/diagnostics.h"

#include <algorithm>
#include <system_error>

namespace nodus::host {

namespace {

// Of the readable character in UTF-8 that the text begins with; 0 when it begins with none.
std::size_t characterLength(std::string_view text)
{
    auto const at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned const first = at(0);
    if (first < 0x80)
        return first < 0x20 || first == 0x7F ? 0 : 1;
    std::size_t const length = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (length == 0 || first > 0xF4 || text.size() < length)
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((at(i) & 0xC0) != 0x80)
            return 0;
    // Control characters, longer forms than need be, surrogates, and what is beyond Unicode.
    unsigned const second = at(1);
    bool const isWrong = (first == 0xC2 && second < 0xA0) || (first == 0xE0 && second < 0xA0) ||
                         (first == 0xED && second > 0x9F) || (first == 0xF0 && second < 0x90) ||
                         (first == 0xF4 && second > 0x8F);
    // U+FFFE and U+FFFF are no characters, and XML takes neither.
    bool const isNone = first == 0xEF && second == 0xBF && at(2) > 0xBD;
    return isWrong || isNone ? 0 : length;
}

// The place, or the one before it at which a character begins: no cut goes through a character.
std::size_t characterAt(std::string_view text, std::size_t place)
{
    constexpr std::size_t kMostBehind = 3;
    for (std::size_t back = 0; back <= std::min(kMostBehind, place); ++back)
        if (place >= text.size() || (static_cast<unsigned char>(text[place - back]) & 0xC0) != 0x80)
            return place - back;
    return place;
}

}  // namespace

void Diagnostics::add(Fault const& fault)
{
    m_lines.insert(m_lines.end(), fault.lines().begin(), fault.lines().end());
}

void Diagnostics::throwIfAny() const
{
    if (!m_lines.empty())
        throw Fault(m_lines);
}

void FileFaults::moveTo(Diagnostics& diagnostics)
{
    std::ranges::stable_sort(m_faults, {}, &Placed::line);
    for (auto const& [line, text] : m_faults)
        diagnostics.add(m_origin + (line == 0 ? "" : ":" + std::to_string(line)) + ": " + text);
    m_faults.clear();
}

void FileFaults::throwIfAny()
{
    Diagnostics diagnostics;
    moveTo(diagnostics);
    diagnostics.throwIfAny();
}

std::string systemError(int number) { return std::generic_category().message(number); }

std::string printable(std::string_view text)
{
    std::string line;
    while (!text.empty()) {
        std::size_t const length = characterLength(text);
        if (length == 0)
            line += '?';
        else
            line += text.substr(0, length);
        text.remove_prefix(std::max(length, std::size_t{1}));
    }
    return line;
}

std::string shortened(std::string_view text, std::size_t most)
{
    if (text.size() <= most)
        return std::string(text);
    std::string between(text.substr(0, characterAt(text, most * 3 / 4)));
    return between.append(" ... ").append(text.substr(characterAt(text, text.size() - most / 4)));
}

std::string inQuotes(std::string_view text)
{
    constexpr std::size_t kMost = 80;
    return "'" + std::string(text.substr(0, characterAt(text, kMost))) +
           (text.size() > kMost ? "...'" : "'");
}

std::string alternatives(std::vector<std::string_view> const& names, std::string_view word,
                         std::size_t most)
{
    std::string text;
    std::size_t const shown = std::min(names.size(), most);
    for (std::size_t i = 0; i < shown; ++i) {
        if (i != 0)
            text += i + 1 == names.size() ? " " + std::string(word) + " " : ", ";
        text += names[i];
    }
    return names.size() > most ? text + ", ..." : text;
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
