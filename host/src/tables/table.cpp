// Reading tables: the header, then row by row.
#include "nodus/host/table.h"

#include "csv_fields.h"
#include "nodus/host/bvh.h"
#include "npy_records.h"
#include "npz_records.h"

#include <filesystem>
#include <span>
#include <unordered_map>

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

namespace {

// A line may end in CR LF.
std::optional<LineReader::Line> withoutReturn(std::optional<LineReader::Line> line)
{
    if (line && line->text.ends_with('\r'))
        line->text.remove_suffix(1);
    return line;
}

}  // namespace

std::optional<LineReader::Line> TableReader::nextLine() { return withoutReturn(m_lines->next()); }

std::optional<LineReader::Line> TableReader::nextRow()
{
    if (m_blankRows == 0) {
        auto line = nextLine();
        if (!line || !line->text.empty())
            return line;
        std::uint64_t const first = line->number;
        do
            line = nextLine();
        while (line && line->text.empty());
        if (!line)
            return std::nullopt;
        m_lines->putBack(*line);
        m_afterBlank = line->number;
        m_blankRows = m_afterBlank - first;
    }
    return LineReader::Line{{}, m_afterBlank - m_blankRows--, true};
}

std::size_t TableReader::readRows(TableRows& rows, std::size_t most)
{
    if (m_records == nullptr && !m_frames)
        return readLines(rows, most);
    std::size_t count = 0;
    while (count < most && (m_frames ? readFrame(&rows) : readRecord(rows)))
        ++count;
    return count;
}

bool TableReader::readRecord(TableRows& rows)
{
    std::size_t const begin = rows.text.size();
    if (!m_records->next(&rows.text))
        return false;
    rows.rows.push_back({begin, rows.text.size(), m_rowsRead++});
    return true;
}

std::size_t TableReader::readLines(TableRows& rows, std::size_t most)
{
    auto line = nextRow();
    if (!line)
        return 0;
    std::size_t const known = rows.rows.size();
    char const* const first = line->text.data();
    auto const place = [first](char const* at) { return static_cast<std::size_t>(at - first); };
    auto const add = [&](LineReader::Line const& row) {
        std::size_t const begin = place(row.text.data());
        rows.rows.push_back({begin, begin + row.text.size(), row.number});
    };
    add(*line);
    if (first != nullptr) {
        while (rows.rows.size() - known < most && (line = withoutReturn(m_lines->nextOfBlock()))) {
            if (line->text.empty()) {
                m_lines->putBack(*line);
                break;
            }
            add(*line);
        }
        std::size_t const begin = m_lines->handOver(first, rows.text);
        for (TableRows::Row& row : std::span(rows.rows).subspan(known)) {
            row.begin += begin;
            row.end += begin;
        }
    }
    m_rowsRead += rows.rows.size() - known;
    return rows.rows.size() - known;
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
    std::size_t const from = rows->text.size();
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
    rows->rows.push_back({from, rows->text.size(), line->number});
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
