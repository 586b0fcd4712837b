// Results: CSV with a column a lane, JSON lines with a member a port, a structured array of NumPy
// with a field a lane, or an archive of NumPy with an array a port.
#pragma once

#include "nodus/host/evaluator.h"
#include "nodus/host/plan.h"
#include "nodus/host/text_buffer.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nodus::host {

struct NpyColumn;

enum class ResultFormat { csv, jsonLines, npy, npz };

// By the extension of the file: ".csv", ".jsonl", ".npy" or ".npz"; CSV for "-". Throws Fault for
// any other.
ResultFormat resultFormatOf(std::string const& path);

// Immutable; any number of threads may write with it. The plan outlives it.
class ResultWriter {
public:
    // Throws Fault for a text where the format has no room for any.
    ResultWriter(Plan const& plan, ResultFormat format);
    ~ResultWriter();

    // What comes before the lines: nothing for JSON lines and archives; of an array as long for any
    // number of rows, so that it may be written again when they are known.
    std::string header(std::uint64_t rows = 0) const;

    // What the records of an array, or of an archive's arrays, are made of.
    std::vector<NpyColumn> const& columns() const { return m_columns; }

    // Appends the line, or record, of frame i of the evaluator's last block.
    void append(Evaluator const& evaluator, std::size_t i, std::int32_t frame,
                TextBuffer& to) const;

    // About how long a line is.
    std::size_t typicalLine() const { return m_fixedSize / 2 + 16; }

private:
    struct Cell {
        Place place;
        TypeId type;         // of the lane
        std::string before;  // what stands between the lane before and this one
    };

    void addCells(PlanOutput const& output);
    void appendText(std::string_view text, TextBuffer& to) const;
    template <typename Real> void appendReal(Real value, TextBuffer& to) const;
    void appendRecord(Evaluator const& evaluator, std::size_t i, std::int32_t frame,
                      TextBuffer& to) const;

    ResultFormat m_format;
    std::vector<Cell> m_cells;
    std::vector<NpyColumn> m_columns;
    std::string m_header, m_start, m_end;
    std::size_t m_fixedSize = 0;  // room for a line without its texts
};

// A text as a field of a CSV line: in quotes where it has to be.
std::string csvField(std::string_view text);

// A text as JSON, in quotes.
std::string jsonText(std::string_view text);

// A text as HTML and its kin have it, within elements and within quoted attributes.
std::string markupText(std::string_view text);

}  // namespace nodus::host
