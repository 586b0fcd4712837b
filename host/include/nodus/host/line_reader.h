// Files line by line, as a stream.
#pragma once

#include "nodus/host/input_file.h"
#include "nodus/host/text_buffer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nodus::host {

// Where a line ends.
enum class LineEnds {
    everywhere,    // at each line feed
    outsideQuotes  // not at a line feed inside the quotes of a CSV field
};

// For one thread at a time. Memory does not grow with the file, only with its longest line. Every
// fault is thrown as a Fault that names the file.
class LineReader {
public:
    struct Line {
        std::string_view text;  // without its line feed; valid until the next call
        std::uint64_t number;   // of its beginning, counted from 1
        bool isWhole;           // there was a line feed: the last line of a file may have none
    };

    // path: "-" for standard input.
    LineReader(std::string const& path, LineEnds ends);

    // What messages call the file.
    std::string const& name() const { return m_file.name(); }

    // How much of the file has been read, 0 to 1; 0 when it has no size to tell.
    double fractionRead() const;

    // Before the first line.
    void skipByteOrderMark();
    // The next line; nothing at the end of the file.
    std::optional<Line> next();
    // The next line when all of it has been read already: lines before it stay valid. Nothing
    // otherwise.
    std::optional<Line> nextOfBlock();
    // That line, the last one, comes once more.
    void putBack(Line const& line);
    // Hands over the text from the beginning of a line that is still valid to where the next one
    // begins. Returns where it lies in the buffer: behind what is there, or in the block that was
    // read itself, if that is less to copy.
    std::size_t handOver(char const* from, TextBuffer& to);

private:
    struct Search {
        std::size_t searched = 0;  // characters behind m_begin
        bool isInQuotes = false;
        std::uint64_t innerLines = 0;
    };
    // The line feed, or null.
    char const* findEnd(Search& search) const;
    Line take(std::size_t length, bool isWhole, std::uint64_t innerLines);
    bool refill();

    InputFile m_file;
    LineEnds m_ends;
    TextBuffer m_block;
    std::size_t m_begin = 0;  // of the next line in the block
    std::size_t m_blockSize;
    bool m_atEnd = false;
    bool m_hasQuotes = false;  // anywhere in the block, where they matter
    std::uint64_t m_line = 1, m_bytesRead = 0;
};

}  // namespace nodus::host
