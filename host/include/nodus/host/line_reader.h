// Files line by line, as a stream.
#pragma once

#include "nodus/host/input_file.h"

#include <cstddef>
#include <cstdint>
#include <memory>
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

private:
    bool refill();

    InputFile m_file;
    LineEnds m_ends;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0, m_begin = 0, m_end = 0;
    bool m_atEnd = false;
    bool m_hasQuotes = false;  // anywhere between begin and end, where they matter
    std::uint64_t m_line = 1, m_bytesRead = 0;
};

}  // namespace nodus::host
