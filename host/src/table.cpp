// Reading tables: large blocks from the file, lines out of blocks.
#include "nodus/host/table.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unordered_map>

#include "csv_fields.h"

namespace nodus::host {

namespace {

constexpr std::size_t kBufferSize = 256 * 1024;
constexpr std::size_t kLongestRow = 64 * 1024 * 1024;

}  // namespace

TableReader::TableReader(std::string path)
    : m_path(std::move(path)), m_buffer(new char[kBufferSize]), m_capacity(kBufferSize)
{
    m_file = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_file < 0)
        throw Fault("cannot read " + m_path + ": " + systemError(errno));
    try {
        struct stat status {};
        if (::fstat(m_file, &status) == 0 && S_ISREG(status.st_mode))
            m_fileSize = static_cast<std::uint64_t>(status.st_size);
        ::posix_fadvise(m_file, 0, 0, POSIX_FADV_SEQUENTIAL);
        readHeader();
    } catch (...) {
        ::close(m_file);
        throw;
    }
}

TableReader::~TableReader() { ::close(m_file); }

double TableReader::fractionRead() const
{
    return m_fileSize == 0 ? 0.0
                           : static_cast<double>(m_bytesRead) / static_cast<double>(m_fileSize);
}

void TableReader::readHeader()
{
    refill();
    if (m_end - m_begin >= 3 && std::memcmp(m_buffer.get() + m_begin, "\xEF\xBB\xBF", 3) == 0)
        m_begin += 3;
    auto const line = nextLine();
    if (!line || line->text.empty())
        throw Fault(m_path + ":1: wants a header line with the names of the columns");
    FieldWalk walk(line->text);
    std::string scratch;
    while (walk.next(scratch))
        m_columns.emplace_back(walk.field());
    if (walk.isBroken())
        throw Fault(m_path + ":1: a quoted name does not end, or goes on behind its quote");
    Diagnostics diagnostics;
    std::unordered_map<std::string_view, std::size_t> first;
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        if (auto const [known, isNew] = first.emplace(m_columns[i], i); !isNew)
            diagnostics.add(m_path + ":1: columns " + std::to_string(known->second + 1) + " and " +
                            std::to_string(i + 1) + " have the same name '" + m_columns[i] + "'");
    diagnostics.throwIfAny();
}

// Moves what is left to the front and reads behind it. False at the end of the file.
bool TableReader::refill()
{
    if (m_atEnd)
        return false;
    if (m_begin != 0) {
        std::memmove(m_buffer.get(), m_buffer.get() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
    }
    if (m_end == m_capacity) {
        if (m_capacity >= kLongestRow)
            throw Fault(m_path + ":" + std::to_string(m_line) + ": the row is too long");
        std::unique_ptr<char[]> larger(new char[2 * m_capacity]);
        std::memcpy(larger.get(), m_buffer.get(), m_end);
        m_buffer = std::move(larger);
        m_capacity *= 2;
    }
    ssize_t got = 0;
    do
        got = ::read(m_file, m_buffer.get() + m_end, m_capacity - m_end);
    while (got < 0 && errno == EINTR);
    if (got < 0)
        throw Fault("cannot read " + m_path + ": " + systemError(errno));
    m_bytesRead += static_cast<std::uint64_t>(got);
    m_end += static_cast<std::size_t>(got);
    m_atEnd = got == 0;
    m_hasQuotes = std::memchr(m_buffer.get(), '"', m_end) != nullptr;
    return !m_atEnd;
}

// A line of the file, or several of them when a quoted field goes over the end of a line.
std::optional<TableReader::Line> TableReader::nextLine()
{
    std::size_t searched = 0;
    bool isInQuotes = false;
    std::uint64_t innerLines = 0;
    for (;;) {
        char const* const begin = m_buffer.get() + m_begin;
        std::size_t const size = m_end - m_begin;
        char const* end = nullptr;
        if (!m_hasQuotes) {
            end = size == searched ? nullptr
                                   : static_cast<char const*>(
                                         std::memchr(begin + searched, '\n', size - searched));
            searched = size;
        } else {
            for (; searched < size && end == nullptr; ++searched) {
                char const c = begin[searched];
                if (c == '"')
                    isInQuotes = !isInQuotes;
                else if (c == '\n' && isInQuotes)
                    ++innerLines;
                else if (c == '\n')
                    end = begin + searched;
            }
        }
        if (end == nullptr && refill())
            continue;
        if (end == nullptr && m_begin == m_end)
            return std::nullopt;
        // refill may have moved the text.
        char const* const from = m_buffer.get() + m_begin;
        std::size_t length =
            end != nullptr ? static_cast<std::size_t>(end - from) : m_end - m_begin;
        m_begin += length + (end != nullptr ? 1 : 0);
        if (length != 0 && from[length - 1] == '\r')
            --length;
        Line const line{{from, length}, m_line};
        m_line += 1 + innerLines;
        return line;
    }
}

std::optional<TableReader::Line> TableReader::nextRow()
{
    if (m_blankLines == 0 && !m_afterBlank) {
        auto const line = nextLine();
        if (!line || !line->text.empty())
            return line;
        m_blankLines = 1;
        std::optional<Line> next;
        while ((next = nextLine()) && next->text.empty())
            ++m_blankLines;
        if (!next) {
            m_blankLines = 0;
            return std::nullopt;
        }
        // The buffer may move before this line's turn.
        m_kept.assign(next->text.data(), next->text.size());
        m_afterBlank = Line{m_kept, next->number};
    }
    if (m_blankLines != 0)
        return Line{{}, m_afterBlank->number - m_blankLines--};
    auto const line = m_afterBlank;
    m_afterBlank.reset();
    return line;
}

bool TableReader::readRow(TableRows& rows)
{
    auto const line = nextRow();
    if (!line)
        return false;
    rows.text.append(line->text);
    rows.rows.push_back({rows.text.size(), line->number});
    ++m_rowsRead;
    return true;
}

bool TableReader::skipRow()
{
    bool const isThere = nextRow().has_value();
    m_rowsRead += isThere ? 1 : 0;
    return isThere;
}

}  // namespace nodus::host
