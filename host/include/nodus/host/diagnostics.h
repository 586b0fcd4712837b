// Faults in words: every fault is one line, and all faults that can be found are told at once.
#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

// Wrong input, wrong usage, or a file that cannot be read or written: what the user can put right.
// Each line stands for itself; none is empty and none ends in a line break.
class Fault : public std::exception {
public:
    explicit Fault(std::string line) : m_lines{std::move(line)} {}
    explicit Fault(std::vector<std::string> lines) : m_lines(std::move(lines)) {}

    std::vector<std::string> const& lines() const noexcept { return m_lines; }
    char const* what() const noexcept override { return m_lines.front().c_str(); }

private:
    std::vector<std::string> m_lines;
};

// Collects the faults of one undertaking, in the order in which they should be read.
class Diagnostics {
public:
    void add(std::string line) { m_lines.push_back(std::move(line)); }
    void add(Fault const& fault);
    // Does the work; the lines of a Fault that ends it are added.
    template <typename Work> void gather(Work const& work)
    {
        try {
            work();
        } catch (Fault const& fault) {
            add(fault);
        }
    }
    bool empty() const { return m_lines.empty(); }
    std::vector<std::string> const& lines() const { return m_lines; }

    // Throws everything collected as one Fault; does nothing when there is nothing.
    void throwIfAny() const;

private:
    std::vector<std::string> m_lines;
};

// The faults of one text, a file as a rule, each with the line at which it stands.
class FileFaults {
public:
    struct Placed {
        std::size_t line;  // counted from 1; 0 where the text as a whole is meant
        std::string text;
    };

    // origin: what the text is called in messages.
    explicit FileFaults(std::string origin) : m_origin(std::move(origin)) {}

    void add(std::size_t line, std::string text) { m_faults.push_back({line, std::move(text)}); }
    std::vector<Placed> const& faults() const { return m_faults; }
    bool empty() const { return m_faults.empty(); }

    // As "graph.json:12: text", in the order of the lines; those of one line in the order in which
    // they were found.
    void moveTo(Diagnostics& diagnostics);
    void throwIfAny();

private:
    std::string m_origin;
    std::vector<Placed> m_faults;
};

// What went wrong in a system call, in words: "No space left on device".
std::string systemError(int number);

// The text on one line of readable characters: control characters and what is no UTF-8 become '?'.
std::string printable(std::string_view text);

// The text as it is, or its beginning and its end when it has more characters.
std::string shortened(std::string_view text, std::size_t most);

// Input in a message: in quotes, the beginning of a long one.
std::string inQuotes(std::string_view text);

// "a, b or c"; nothing for an empty list. The last two may be joined by another word.
std::string alternatives(std::vector<std::string_view> const& names, std::string_view word = "or",
                         std::size_t most = 8);

// The known name nearest to a misspelt one, or an empty one when none is near.
template <typename Names> std::string_view nearestName(std::string_view wrong, Names const& known);

// The same in words: "; did you mean 'axis'?", else nothing.
template <typename Names> std::string didYouMean(std::string_view wrong, Names const& known);

// How one text becomes the other: insertions, deletions, replacements and swaps of neighbours, with
// the case of letters counted for nothing. Gives up and returns limit when it takes that many.
std::size_t editDistance(std::string_view a, std::string_view b, std::size_t limit);

template <typename Names> std::string_view nearestName(std::string_view wrong, Names const& known)
{
    std::string_view nearest;
    std::size_t best = wrong.size() < 3 ? 1 : wrong.size() < 5 ? 2 : wrong.size() < 9 ? 3 : 4;
    for (std::string_view const name : known)
        if (std::size_t const distance = editDistance(wrong, name, best); distance < best) {
            best = distance;
            nearest = name;
        }
    return nearest;
}

template <typename Names> std::string didYouMean(std::string_view wrong, Names const& known)
{
    std::string_view const nearest = nearestName(wrong, known);
    return nearest.empty() ? "" : "; did you mean '" + std::string(nearest) + "'?";
}

}  // namespace nodus::host
