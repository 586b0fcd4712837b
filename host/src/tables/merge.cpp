// Merging parts: of all parts the line with the lowest frame is the next, and has to be the frame
// that is due.
#include "nodus/host/merge.h"

#include "result_part.h"

#include "nodus/host/diagnostics.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <queue>
#include <tuple>

namespace nodus::host {

namespace {

constexpr std::size_t kMostFaults = 20;

// "frame 3" or "frames 3 to 9"; and the verb that belongs to it.
std::string framesText(std::int32_t first, std::int32_t last, std::string_view one,
                       std::string_view many)
{
    return (first == last ? "frame " + std::to_string(first) + " "
                          : "frames " + std::to_string(first) + " to " + std::to_string(last) + " ")
        .append(first == last ? one : many);
}

// What is known of a part without keeping it open.
struct Head {
    std::int32_t frame;
    std::size_t part;
    auto operator<=>(Head const&) const = default;
};

class Merge {
public:
    Merge(MergeOptions const& options, OutputFile& to)
        : m_options(options), m_to(to), m_open(options.parts.size())
    {
    }

    void run()
    {
        meetParts();
        throwIfAny();
        m_to.write(m_header);
        while (!m_heads.empty()) {
            std::size_t const part = m_heads.top().part;
            m_heads.pop();
            takeFrom(part);
        }
        tellTwice();
        if (m_options.frames && !isLog() && m_due < m_options.frames->count())
            tellMissing(m_options.frames->count());
        // With a part that could not be read to its end they may well be there.
        for (std::string& line : m_missing)
            if (!m_hasBrokenPart)
                tell(std::move(line));
        throwIfAny();
    }

private:
    bool isLog() const { return m_options.format == PartFormat::log; }

    // False when the part cannot be used any further.
    template <typename Work> bool attempt(Work work)
    {
        try {
            return work();
        } catch (Fault const& fault) {
            m_hasBrokenPart = true;
            for (std::string const& line : fault.lines())
                tell(line);
        }
        return false;
    }

    void tell(std::string line)
    {
        if (m_faults.lines().size() < kMostFaults)
            m_faults.add(std::move(line));
        else
            m_hasMoreFaults = true;
    }

    void throwIfAny()
    {
        if (m_hasMoreFaults)
            m_faults.add("these are the first " + std::to_string(kMostFaults) +
                         " faults of the files; there are more");
        m_faults.throwIfAny();
    }

    std::unique_ptr<Part> open(std::size_t index) const
    {
        return std::make_unique<Part>(m_options.parts[index], m_options.format);
    }

    // The first frame of each part, and whether all have the same columns.
    void meetParts()
    {
        std::optional<std::size_t> named;
        std::vector<std::string> names;
        for (std::size_t i = 0; i < m_options.parts.size(); ++i)
            attempt([&] {
                auto const part = open(i);
                if (part->advance())
                    m_heads.push({part->frame(), i});
                if (part->names().empty())
                    return true;
                if (!named) {
                    named = i;
                    names = part->names();
                    m_header = part->header();
                }
                compareNames(part->names(), m_options.parts[i], names, m_options.parts[*named]);
                return true;
            });
    }

    static void compareNames(std::vector<std::string> const& own, std::string const& path,
                             std::vector<std::string> const& others, std::string const& other)
    {
        auto const [mine, theirs] = std::ranges::mismatch(own, others);
        if (mine != own.end() && theirs != others.end())
            throw Fault(path + ":1: column " + std::to_string(mine - own.begin() + 1) + " is '" +
                        *mine + "', in " + other + " it is '" + *theirs + "'");
        if (own.size() != others.size())
            throw Fault(path + ":1: has " + std::to_string(own.size()) + " columns, " + other +
                        " has " + std::to_string(others.size()));
    }

    // Lines of the part as long as no other part has a lower frame.
    void takeFrom(std::size_t index)
    {
        bool const isMet = m_open[index] != nullptr;
        bool goesOn = attempt([&] {
            if (!isMet)
                m_open[index] = open(index);
            return isMet || m_open[index]->advance();
        });
        while (goesOn) {
            Part& part = *m_open[index];
            if (!m_heads.empty() && m_heads.top() < Head{part.frame(), index})
                return m_heads.push({part.frame(), index});
            place(part, index);
            goesOn = attempt([&] { return part.advance(); });
        }
        m_open[index].reset();
    }

    void place(Part const& part, std::size_t index)
    {
        std::int32_t const frame = part.frame();
        if (m_last && frame == m_last->frame && index != m_last->part)
            return addTwice(frame, index);
        if (m_options.frames && !isDue(part, index))
            return;
        m_last = Head{frame, index};
        if (!m_faults.empty() || !m_missing.empty())
            return;
        m_to.write(part.text());
        m_to.write("\n");
        if (++m_done % 1024 == 0 && m_options.progress)
            m_options.progress(m_done);
    }

    // Whether the frame is one of the whole's; tells what is missing before it.
    bool isDue(Part const& part, std::size_t index)
    {
        FrameRange const& frames = *m_options.frames;
        std::int64_t const distance = std::int64_t{part.frame()} - frames.first;
        auto const due = static_cast<std::uint64_t>(distance / frames.step);
        if (distance < 0 || distance % frames.step != 0 || due >= frames.count()) {
            // Once a part is enough.
            if (m_strange != index)
                tell(part.place() + ": frame " + std::to_string(part.frame()) +
                     " is none of the frames " + std::to_string(frames.first) + " to " +
                     std::to_string(frames.last) +
                     (frames.step == 1 ? "" : ", every " + std::to_string(frames.step)));
            m_strange = index;
            return false;
        }
        if (!isLog() && due > m_due)
            tellMissing(due);
        m_due = due + 1;
        return true;
    }

    // From the one that is due to the one before end.
    void tellMissing(std::uint64_t end)
    {
        FrameRange const& frames = *m_options.frames;
        if (m_missing.size() <= kMostFaults)
            m_missing.push_back(framesText(frames.at(m_due), frames.at(end - 1), "is", "are") +
                                " in none of the files");
    }

    // Collects neighbours, so that they are told in one line.
    void addTwice(std::int32_t frame, std::size_t index)
    {
        if (m_twice && m_twice->parts == std::pair(m_last->part, index))
            m_twice->last = frame;
        else {
            tellTwice();
            m_twice = Twice{{m_last->part, index}, frame, frame};
        }
    }

    void tellTwice()
    {
        if (!m_twice)
            return;
        auto const& [first, second] = m_twice->parts;
        tell(framesText(m_twice->first, m_twice->last, "is", "are") + " in " +
             m_options.parts[first] + " and again in " + m_options.parts[second]);
        m_twice.reset();
    }

    struct Twice {
        std::pair<std::size_t, std::size_t> parts;
        std::int32_t first, last;
    };

    MergeOptions const& m_options;
    OutputFile& m_to;
    std::vector<std::unique_ptr<Part>> m_open;
    std::priority_queue<Head, std::vector<Head>, std::greater<>> m_heads;
    std::string m_header;
    std::uint64_t m_due = 0;     // the index of the frame that has to come next
    std::uint64_t m_done = 0;    // lines
    std::optional<Head> m_last;  // that was placed
    std::optional<Twice> m_twice;
    std::optional<std::size_t> m_strange;  // the part that has frames of another whole
    Diagnostics m_faults;
    std::vector<std::string> m_missing;  // told behind the other faults
    bool m_hasMoreFaults = false, m_hasBrokenPart = false;
};

}  // namespace

void merge(MergeOptions const& options, OutputFile& to) { Merge(options, to).run(); }

}  // namespace nodus::host
