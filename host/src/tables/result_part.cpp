// Parts: which frame the line of a CSV file, a file of JSON lines or a log belongs to.
#include "result_part.h"

#include "csv_fields.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/json.h"

#include <charconv>
#include <filesystem>

namespace nodus::host {

namespace {

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

// Parts are opened more than once.
std::string regular(std::string path)
{
    if (std::filesystem::exists(path) && !std::filesystem::is_regular_file(path))
        throw Fault(path + ": only regular files can be merged");
    return path;
}

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

Part::Part(std::string path, PartFormat format)
    : m_path(regular(std::move(path))), m_format(format),
      m_lines(m_path, format == PartFormat::csv ? LineEnds::outsideQuotes : LineEnds::everywhere)
{
    if (m_format == PartFormat::csv)
        readHeader();
}

bool Part::advance()
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

void Part::requireWhole() const
{
    if (!m_line.isWhole)
        throw Fault(place() + ": the file breaks off within this line");
}

void Part::readHeader()
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

std::optional<std::int32_t> Part::frameOfLine(bool isFirst)
{
    std::string_view rest = m_line.text;
    switch (m_format) {
    case PartFormat::csv: {
        FieldWalk walk(rest);
        std::size_t const fields = walk.skip(SIZE_MAX, m_scratch);
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

void Part::readMembers()
{
    FileFaults faults(m_path);
    auto const object = parseJson(m_line.text, faults, m_line.number);
    faults.throwIfAny();
    m_names = object->keys;
}

}  // namespace nodus::host
