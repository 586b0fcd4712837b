// Reading lines: large blocks from the file, lines out of blocks.
#include "nodus/host/line_reader.h"

#include "nodus/host/diagnostics.h"

#include <algorithm>
#include <utility>

namespace nodus::host {

namespace {

constexpr std::size_t kBlockSize = std::size_t{128} * 1024;
constexpr std::size_t kLongestLine = std::size_t{64} * 1024 * 1024;

}  // namespace

LineReader::LineReader(std::string const& path, LineEnds ends)
    : m_file(path), m_ends(ends), m_blockSize(kBlockSize)
{
}

double LineReader::fractionRead() const
{
    return m_file.size() == 0
               ? 0.0
               : static_cast<double>(m_bytesRead) / static_cast<double>(m_file.size());
}

void LineReader::skipByteOrderMark()
{
    refill();
    if (m_block.view().starts_with("\xEF\xBB\xBF"))
        m_begin += 3;
}

// Moves what is left to the front and reads behind it. False at the end of the file.
bool LineReader::refill()
{
    if (m_atEnd)
        return false;
    m_block.dropFront(std::exchange(m_begin, 0));
    if (m_block.size() == m_blockSize) {
        if (m_blockSize >= kLongestLine)
            throw Fault(name() + ":" + std::to_string(m_line) + ": the line is too long");
        m_blockSize *= 2;
    }
    std::size_t const room = m_blockSize - m_block.size();
    m_block.reserve(room);
    std::size_t const got = m_file.read(m_block.room(), room);
    m_block.takeIn(got);
    m_bytesRead += got;
    m_atEnd = got == 0;
    if (m_atEnd && m_bytesRead < m_file.size())
        throw Fault(name() + ": became shorter while it was read");
    m_hasQuotes =
        m_ends == LineEnds::outsideQuotes && m_block.view().find('"') != m_block.view().npos;
    return !m_atEnd;
}

char const* LineReader::findEnd(Search& search) const
{
    std::string_view const rest = m_block.view().substr(m_begin);
    if (!m_hasQuotes) {
        std::size_t const end = rest.find('\n', search.searched);
        search.searched = rest.size();
        return end == rest.npos ? nullptr : rest.data() + end;
    }
    for (; search.searched < rest.size(); ++search.searched) {
        char const c = rest[search.searched];
        if (c == '"')
            search.isInQuotes = !search.isInQuotes;
        else if (c == '\n' && search.isInQuotes)
            ++search.innerLines;
        else if (c == '\n')
            return rest.data() + search.searched;
    }
    return nullptr;
}

LineReader::Line LineReader::take(std::size_t length, bool isWhole, std::uint64_t innerLines)
{
    Line const line{m_block.view().substr(m_begin, length), m_line, isWhole};
    m_begin += length + (isWhole ? 1 : 0);
    m_line += 1 + innerLines;
    return line;
}

// A line of the file, or several of them when a quoted field goes over the end of a line.
std::optional<LineReader::Line> LineReader::next()
{
    Search search;
    for (;;) {
        char const* const begin = m_block.view().data() + m_begin;
        if (char const* const end = findEnd(search))
            return take(static_cast<std::size_t>(end - begin), true, search.innerLines);
        if (refill())
            continue;
        if (m_begin == m_block.size())
            return std::nullopt;
        return take(m_block.size() - m_begin, false, search.innerLines);
    }
}

std::optional<LineReader::Line> LineReader::nextOfBlock()
{
    Search search;
    char const* const begin = m_block.view().data() + m_begin;
    char const* const end = findEnd(search);
    if (end == nullptr)
        return std::nullopt;
    return take(static_cast<std::size_t>(end - begin), true, search.innerLines);
}

void LineReader::putBack(Line const& line)
{
    m_begin = static_cast<std::size_t>(line.text.data() - m_block.view().data());
    m_line = line.number;
}

std::size_t LineReader::handOver(char const* from, TextBuffer& to)
{
    std::string_view const block = m_block.view();
    auto const begin = static_cast<std::size_t>(from - block.data());
    std::size_t const end = m_begin;
    if (to.size() != 0 || block.size() - end > end - begin) {
        to.append(block.substr(begin, end - begin));
        return to.size() - (end - begin);
    }
    std::swap(m_block, to);
    m_block.append(to.view().substr(end));
    m_begin = 0;
    // A long line makes no later block long.
    m_blockSize = std::max(kBlockSize, m_block.size());
    return begin;
}

}  // namespace nodus::host
