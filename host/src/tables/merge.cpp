// Merging parts: of all parts the line with the lowest frame is the next, and has to be the frame
// that is due.
#include "nodus/host/merge.h"

#include "csv_fields.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/json.h"
#include "nodus/host/line_reader.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <memory>
#include <queue>
#include <tuple>

namespace nodus::host {

namespace {

constexpr std::size_t kMostFaults = 20;
constexpr std::string_view kJsonStart = "{\"frame\":";
constexpr std::string_view kLogStart = "frame ";

// The whole number at the beginning of the text, which is moved behind it.
std::optional<std::int32_t> takeFrame(std::string_view& text)
{
    std::int32_t frame = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), frame);
    if (error != std::errc{})
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return frame;
}

// "frame 3" or "frames 3 to 9"; and the verb that belongs to it.
std::string framesText(std::int32_t first, std::int32_t last, std::string_view one,
                       std::string_view many)
{
    return (first == last ? "frame " + std::to_string(first) + " "
                          : "frames " + std::to_string(first) + " to " + std::to_string(last) + " ")
        .append(first == last ? one : many);
}

// One of the files, at the line that it offers next.
class Part {
public:
    Part(std::string path, PartFormat format)
        : m_path(regular(std::move(path))), m_format(format),
          m_lines(m_path,
                  format == PartFormat::csv ? LineEnds::outsideQuotes : LineEnds::everywhere)
    {
        if (m_format == PartFormat::csv)
            readHeader();
    }

    std::string const& header() const { return m_header; }
    std::vector<std::string> const& names() const { return m_names; }
    std::string_view text() const { return m_line.text; }
    std::int32_t frame() const { return m_frame; }
    std::string place() const { return m_path + ":" + std::to_string(m_line.number); }

    // To the next line; false behind the last one.
    bool advance()
    {
        auto const line = m_lines.next();
        if (!line)
            return false;
        bool const isFirst = !m_hasLine;
        m_hasLine = true;
        m_line = *line;
        requireWhole();
        auto const frame = frameOfLine(isFirst);
        if (!frame)
            throw Fault(place() + ": is no line of a result file");
        if (!isFirst && (*frame < m_frame || (*frame == m_frame && m_format != PartFormat::log)))
            throw Fault(place() + ": frame " + std::to_string(*frame) + " comes behind frame " +
                        std::to_string(m_frame));
        m_frame = *frame;
        return true;
    }

private:
    // Parts are opened more than once.
    static std::string regular(std::string path)
    {
        if (std::filesystem::exists(path) && !std::filesystem::is_regular_file(path))
            throw Fault(path + ": only regular files can be merged");
        return path;
    }

    void requireWhole() const
    {
        if (!m_line.isWhole)
            throw Fault(place() + ": the file breaks off within this line");
    }

    void readHeader()
    {
        auto const line = m_lines.next();
        if (!line)
            throw Fault(m_path + ":1: the file is empty, it wants a header line");
        m_line = *line;
        requireWhole();
        m_header = std::string(line->text) + "\n";
        FieldWalk walk(line->text);
        while (walk.next(m_scratch))
            m_names.emplace_back(walk.field());
        if (walk.isBroken() || m_names.front() != "frame")
            throw Fault(place() + ": is no header of a result file; its first column is 'frame'");
    }

    std::optional<std::int32_t> frameOfLine(bool isFirst)
    {
        std::string_view rest = m_line.text;
        switch (m_format) {
        case PartFormat::csv: {
            FieldWalk walk(rest);
            std::size_t fields = 0;
            while (walk.skip(m_scratch))
                ++fields;
            auto const frame = takeFrame(rest);
            bool const isEnd = rest.empty() || rest.front() == ',';
            return isEnd && !walk.isBroken() && fields == m_names.size() ? frame : std::nullopt;
        }
        case PartFormat::jsonLines: {
            if (!rest.starts_with(kJsonStart) || !rest.ends_with('}'))
                return std::nullopt;
            if (isFirst)
                readMembers();
            rest.remove_prefix(kJsonStart.size());
            auto const frame = takeFrame(rest);
            return rest.front() == ',' || rest.size() == 1 ? frame : std::nullopt;
        }
        case PartFormat::log: {
            bool const isStart = rest.starts_with(kLogStart);
            rest.remove_prefix(isStart ? kLogStart.size() : 0);
            auto const frame = isStart ? takeFrame(rest) : std::nullopt;
            if (frame && rest.starts_with(": "))
                return frame;
            // A text of several lines goes on.
            return isFirst ? std::nullopt : std::optional(m_frame);
        }
        }
        return std::nullopt;
    }

    void readMembers()
    {
        FileFaults faults(m_path);
        auto const object = parseJson(m_line.text, faults, m_line.number);
        faults.throwIfAny();
        m_names = object->keys;
    }

    std::string m_path;
    PartFormat m_format;
    LineReader m_lines;
    LineReader::Line m_line{};
    std::string m_header, m_scratch;
    std::vector<std::string> m_names;
    std::int32_t m_frame = 0;
    bool m_hasLine = false;
};

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

PartFormat partFormatOf(std::string const& path)
{
    std::string const extension = std::filesystem::path(path).extension().string();
    if (extension == ".csv")
        return PartFormat::csv;
    if (extension == ".jsonl")
        return PartFormat::jsonLines;
    if (extension == ".log")
        return PartFormat::log;
    throw Fault(path + ": only results (.csv or .jsonl) and logs (.log) can be merged");
}

void merge(MergeOptions const& options, OutputFile& to) { Merge(options, to).run(); }

}  // namespace nodus::host
