// A result file or log as merging reads it: one of the parts, at the line that it offers next.
#pragma once

#include "nodus/host/line_reader.h"
#include "nodus/host/merge.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

class Part {
public:
    // Throws Fault when the file cannot be read, or has no header where it should.
    Part(std::string path, PartFormat format);

    std::string const& header() const { return m_header; }
    std::vector<std::string> const& names() const { return m_names; }
    std::string_view text() const { return m_line.text; }
    std::int32_t frame() const { return m_frame; }
    std::string place() const { return m_path + ":" + std::to_string(m_line.number); }

    // To the next line; false behind the last one. Throws Fault when it is none of a result file,
    // or its frame is not behind the one before.
    bool advance();

private:
    void requireWhole() const;
    void readHeader();
    std::optional<std::int32_t> frameOfLine(bool isFirst);
    void readMembers();

    std::string m_path;
    PartFormat m_format;
    LineReader m_lines;
    LineReader::Line m_line{};
    std::string m_header, m_scratch;
    std::vector<std::string> m_names;
    std::int32_t m_frame = 0;
    bool m_hasLine = false;
};

}  // namespace nodus::host
