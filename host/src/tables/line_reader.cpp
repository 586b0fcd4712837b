// Reading lines: large blocks from the file, lines out of blocks.
#include "nodus/host/line_reader.h"

#include "nodus/host/diagnostics.h"

#include <cstring>

namespace nodus::host {

namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
constexpr std::size_t kLongestLine = std::size_t{64} * 1024 * 1024;

}  // namespace

LineReader::LineReader(std::string const& path, LineEnds ends)
    : m_file(path), m_ends(ends), m_buffer(new char[kBufferSize]), m_capacity(kBufferSize)
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
    if (m_end - m_begin >= 3 && std::memcmp(m_buffer.get() + m_begin, "\xEF\xBB\xBF", 3) == 0)
        m_begin += 3;
}

// Moves what is left to the front and reads behind it. False at the end of the file.
bool LineReader::refill()
{
    if (m_atEnd)
        return false;
    if (m_begin != 0) {
        std::memmove(m_buffer.get(), m_buffer.get() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
    }
    if (m_end == m_capacity) {
        if (m_capacity >= kLongestLine)
            throw Fault(name() + ":" + std::to_string(m_line) + ": the line is too long");
        std::unique_ptr<char[]> larger(new char[2 * m_capacity]);
        std::memcpy(larger.get(), m_buffer.get(), m_end);
        m_buffer = std::move(larger);
        m_capacity *= 2;
    }
    std::size_t const got = m_file.read(m_buffer.get() + m_end, m_capacity - m_end);
    m_bytesRead += got;
    m_end += got;
    m_atEnd = got == 0;
    if (m_atEnd && m_bytesRead < m_file.size())
        throw Fault(name() + ": became shorter while it was read");
    m_hasQuotes =
        m_ends == LineEnds::outsideQuotes && std::memchr(m_buffer.get(), '"', m_end) != nullptr;
    return !m_atEnd;
}

// A line of the file, or several of them when a quoted field goes over the end of a line.
std::optional<LineReader::Line> LineReader::next()
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
        std::size_t const length =
            end != nullptr ? static_cast<std::size_t>(end - from) : m_end - m_begin;
        m_begin += length + (end != nullptr ? 1 : 0);
        Line const line{{from, length}, m_line, end != nullptr};
        m_line += 1 + innerLines;
        return line;
    }
}

}  // namespace nodus::host
