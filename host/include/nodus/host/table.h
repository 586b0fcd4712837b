// Tables, read as a stream: CSV files with a header line, arrays of NumPy (.npy, .npz), and motion
// capture (.bvh).
#pragma once

#include "nodus/host/diagnostics.h"
#include "nodus/host/evaluator.h"
#include "nodus/host/frames.h"
#include "nodus/host/line_reader.h"
#include "nodus/host/text_buffer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

class Records;
struct NpyField;

// Rows as they stand in the file, taken out of the reader.
struct TableRows {
    struct Row {
        std::size_t begin, end;  // in text
        std::uint64_t line;      // in the file, counted from 1; of an array the row, counted from 0
    };
    TextBuffer text;
    std::vector<Row> rows;

    void clear()
    {
        text.clear();
        rows.clear();
    }
    std::string_view row(std::size_t i) const
    {
        return text.view().substr(rows[i].begin, rows[i].end - rows[i].begin);
    }
};

// Reads rows in order, for one thread at a time. Lines end in LF or CR LF, fields may be in quotes,
// a byte order mark before the header and blank lines behind the last row are skipped. Memory does
// not grow with the table. Every fault is thrown as a Fault that names the file, and the line.
class TableReader {
public:
    // Opens the file and reads the header: at least one column, no two of one name. A path that
    // ends in ".npy" is an array with a field for each column, one that ends in ".npz" an archive
    // with an array for each column or vector, one that ends in ".bvh" has those of
    // readBvhSkeleton. path: "-" for standard input.
    explicit TableReader(std::string const& path);
    ~TableReader();

    // What messages call the file.
    std::string const& name() const { return m_name; }
    // Of arrays, whose rows are records; null for others.
    std::vector<NpyField> const* fields() const;
    std::vector<std::string> const& columns() const { return m_columns; }
    // Of each column, whether it has angles in degrees, which are read as radians; empty when none
    // has.
    std::vector<bool> const& inDegrees() const { return m_inDegrees; }
    std::uint64_t rowsRead() const { return m_rowsRead; }

    // How much of the file has been read, 0 to 1; 0 when it has no size to tell.
    double fractionRead() const;

    // Adds the next row; false when there is none.
    bool readRow(TableRows& rows) { return readRows(rows, 1) != 0; }
    // Adds one row or more, up to that many, as they come without waiting for the file once more.
    // Returns how many; 0 when there is none.
    std::size_t readRows(TableRows& rows, std::size_t most);
    // Passes over a row; false when there is none.
    bool skipRow();

private:
    std::optional<LineReader::Line> nextLine();
    std::optional<LineReader::Line> nextRow();
    void readHeader(std::string const& path);
    void readSkeleton(std::string const& path);
    std::size_t readLines(TableRows& rows, std::size_t most);
    bool readRecord(TableRows& rows);
    bool readFrame(TableRows* rows);

    std::string m_name;
    std::unique_ptr<Records> m_records;  // in place of the lines
    std::optional<LineReader> m_lines;
    std::vector<std::string> m_columns;
    std::vector<bool> m_inDegrees;
    std::optional<std::uint64_t> m_frames;  // that motion capture says it has
    std::uint64_t m_rowsRead = 0;
    // Blank lines are rows only when a row follows.
    std::uint64_t m_blankRows = 0, m_afterBlank = 0;  // how many to come, and the line behind
};

// A frame for each row, counted from 0. Reads the table to its end; since it is read once more when
// frames are evaluated, it has to be a regular file. Throws Fault.
FrameRange framesOfTable(std::string const& path);

// Takes the fields that a plan asks for out of rows. Immutable; for any number of threads.
class TableParser {
public:
    // The reader outlives it.
    TableParser(TableReader const& reader, Plan const& plan);

    // How many rows later a frame reads rows: in ascending order, and always 0 among them.
    std::vector<std::int32_t> const& shifts() const { return m_shifts; }
    // Whether there are others than 0.
    bool isShifted() const { return m_shifts.size() > 1; }

    // Writes the values of a row to their places for frame i of the evaluator's next block. Adds a
    // fault for each field that is wrong and for a row of the wrong length. The row is the frame's
    // own, or the one at shifts()[shift].
    void parse(std::string_view row, std::uint64_t line, Evaluator& evaluator, std::size_t i,
               Diagnostics& diagnostics) const
    {
        parse(row, line, evaluator, i, diagnostics, m_own);
    }
    void parse(std::string_view row, std::uint64_t line, Evaluator& evaluator, std::size_t i,
               Diagnostics& diagnostics, std::size_t shift) const;
    // The defaults of that shift, where the table has no such row.
    void storeDefaults(Evaluator& evaluator, std::size_t i, std::size_t shift) const;

private:
    struct Target {
        std::size_t column;
        ValueType const* type;
        Place place;
        std::optional<std::array<std::byte, 8>> beyond;
        bool inDegrees;
    };

    void store(std::string_view field, Target const& target, std::uint64_t line, std::byte* to,
               Diagnostics& diagnostics) const;

    void parseRecord(char const* record, std::uint64_t row, Evaluator& evaluator, std::size_t i,
                     Diagnostics& diagnostics, std::vector<Target> const& targets) const;
    // "t.csv:12", "t.npy: row 11".
    std::string where(std::uint64_t line) const;

    std::string m_name;
    std::vector<std::string> m_columns;
    std::vector<std::int32_t> m_shifts;
    std::vector<std::vector<Target>> m_targets;  // for each shift, by column
    std::size_t m_own = 0;                       // the shift that is 0
    std::vector<NpyField> const* m_fields;
};

}  // namespace nodus::host
