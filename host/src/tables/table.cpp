// Reading tables: the header, then row by row.
#include "nodus/host/table.h"

#include <filesystem>
#include <unordered_map>

#include "csv_fields.h"
#include "nodus/host/bvh.h"
#include "npy_records.h"
#include "npz_records.h"

namespace nodus::host {

namespace {

std::unique_ptr<Records> recordsOf(std::string const& path)
{
    auto const extension = std::filesystem::path(path).extension();
    if (extension == ".npy")
        return std::make_unique<NpyRecords>(path);
    if (extension == ".npz")
        return std::make_unique<NpzRecords>(path);
    return nullptr;
}

}  // namespace

TableReader::TableReader(std::string const& path)
    : m_name(inputName(path)), m_records(recordsOf(path))
{
    if (m_records != nullptr)
        for (NpyField const& field : *fields())
            m_columns.push_back(field.name);
    else if (std::filesystem::path(path).extension() == ".bvh")
        readSkeleton(path);
    else
        readHeader(path);
    Diagnostics diagnostics;
    std::unordered_map<std::string_view, std::size_t> first;
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        if (auto const [known, isNew] = first.emplace(m_columns[i], i); !isNew)
            diagnostics.add(name() + (m_records != nullptr ? ": columns " : ":1: columns ") +
                            std::to_string(known->second + 1) + " and " + std::to_string(i + 1) +
                            " have the same name '" + m_columns[i] + "'");
    diagnostics.throwIfAny();
}

TableReader::~TableReader() = default;

std::vector<NpyField> const* TableReader::fields() const
{
    return m_records != nullptr ? &m_records->fields() : nullptr;
}

double TableReader::fractionRead() const
{
    return m_records != nullptr ? m_records->fractionRead() : m_lines->fractionRead();
}

void TableReader::readSkeleton(std::string const& path)
{
    m_lines.emplace(path, LineEnds::everywhere);
    BvhSkeleton skeleton = readBvhSkeleton(*m_lines);
    m_columns = std::move(skeleton.columns);
    m_inDegrees = std::move(skeleton.isAngle);
    m_frames = skeleton.frames;
}

void TableReader::readHeader(std::string const& path)
{
    m_lines.emplace(path, LineEnds::outsideQuotes);
    m_lines->skipByteOrderMark();
    auto const line = nextLine();
    if (!line || line->text.empty())
        throw Fault(name() + ":1: wants a header line with the names of the columns");
    FieldWalk walk(line->text);
    std::string scratch;
    while (walk.next(scratch))
        m_columns.emplace_back(walk.field());
    if (walk.isBroken())
        throw Fault(name() + ":1: a quoted name does not end, or goes on behind its quote");
}

// A line may end in CR LF.
std::optional<LineReader::Line> TableReader::nextLine()
{
    auto line = m_lines->next();
    if (line && line->text.ends_with('\r'))
        line->text.remove_suffix(1);
    return line;
}

std::optional<LineReader::Line> TableReader::nextRow()
{
    if (m_blankLines == 0 && !m_afterBlank) {
        auto const line = nextLine();
        if (!line || !line->text.empty())
            return line;
        m_blankLines = 1;
        std::optional<LineReader::Line> next;
        while ((next = nextLine()) && next->text.empty())
            ++m_blankLines;
        if (!next) {
            m_blankLines = 0;
            return std::nullopt;
        }
        // The buffer may move before this line's turn.
        m_kept.assign(next->text.data(), next->text.size());
        m_afterBlank = LineReader::Line{m_kept, next->number, next->isWhole};
    }
    if (m_blankLines != 0)
        return LineReader::Line{{}, m_afterBlank->number - m_blankLines--, true};
    auto const line = m_afterBlank;
    m_afterBlank.reset();
    return line;
}

bool TableReader::readRow(TableRows& rows)
{
    if (m_records != nullptr) {
        if (!m_records->next(&rows.text))
            return false;
        rows.rows.push_back({rows.text.size(), m_rowsRead++});
        return true;
    }
    if (m_frames)
        return readFrame(&rows);
    auto const line = nextRow();
    if (!line)
        return false;
    rows.text.append(line->text);
    rows.rows.push_back({rows.text.size(), line->number});
    ++m_rowsRead;
    return true;
}

// A line of motion capture as a row like others: commas in place of the blanks.
bool TableReader::readFrame(TableRows* rows)
{
    constexpr std::string_view kBlanks = " \t\r";
    auto const line = nextRow();
    if (!line && m_rowsRead != *m_frames)
        throw Fault(name() + ": has " + std::to_string(m_rowsRead) + " frames, its header says " +
                    std::to_string(*m_frames));
    if (!line)
        return false;
    if (m_rowsRead++ == *m_frames)
        throw Fault(name() + ":" + std::to_string(line->number) +
                    ": one more frame than the header says, " + std::to_string(*m_frames));
    if (rows == nullptr)
        return true;
    std::string_view rest = line->text;
    for (bool isFirst = true;; isFirst = false) {
        std::size_t const begin = rest.find_first_not_of(kBlanks);
        if (begin == rest.npos)
            break;
        std::size_t const end = std::min(rest.find_first_of(kBlanks, begin), rest.size());
        rows->text.append(isFirst ? "" : ",");
        rows->text.append(rest.substr(begin, end - begin));
        rest.remove_prefix(end);
    }
    rows->rows.push_back({rows->text.size(), line->number});
    return true;
}

bool TableReader::skipRow()
{
    if (m_frames)
        return readFrame(nullptr);
    bool const isThere = m_records != nullptr ? m_records->next(nullptr) : nextRow().has_value();
    m_rowsRead += isThere ? 1 : 0;
    return isThere;
}

FrameRange framesOfTable(std::string const& path)
{
    // Before it is opened: what was read of a pipe would be gone.
    if (isStandardStream(path) ||
        (std::filesystem::exists(path) && !std::filesystem::is_regular_file(path)))
        throw Fault(inputName(path) +
                    ": its rows can be counted in a regular file only; say which frames "
                    "there are with --frames");
    TableReader table(path);
    while (table.skipRow()) {
    }
    if (table.rowsRead() > std::uint64_t{1} << 31)
        throw Fault(path + ": has more rows than there are frames");
    return {0, static_cast<std::int32_t>(static_cast<std::int64_t>(table.rowsRead()) - 1), 1};
}

}  // namespace nodus::host
