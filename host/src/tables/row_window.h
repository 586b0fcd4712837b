// The rows around a frame, for graphs that read rows before and after.
#pragma once

#include "nodus/host/table.h"

#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

namespace nodus::host {

// The rows of some frames, each once, and which of them each frame needs.
struct RowsOfFrames {
    struct Use {
        std::size_t row;  // in rows
        bool isBeyond;    // the table has no such row: this is the nearest
    };
    TableRows rows;
    std::vector<Use> uses;  // for each frame one for each of the parser's shifts

    void clear();

private:
    friend class RowWindow;
    std::unordered_map<std::int64_t, std::size_t> m_index;  // in rows, by the table's numbers
};

// Reads a table for frames in ascending order. Keeps the rows from the first to the last that a
// frame needs, and no others.
class RowWindow {
public:
    // How many rows later, in ascending order and with 0 among them. The reader outlives this.
    RowWindow(TableReader& table, std::vector<std::int32_t> shifts)
        : m_table(table), m_shifts(std::move(shifts))
    {
    }

    // Adds what the frame needs; false when the table has no row for it.
    bool add(std::int32_t frame, RowsOfFrames& to);

private:
    struct Kept {
        std::string text;
        std::uint64_t line;
    };
    bool readNext();

    TableReader& m_table;
    std::vector<std::int32_t> m_shifts;
    TableRows m_read;
    std::deque<Kept> m_rows;
    std::int64_t m_first = 0;  // the number of the first that is kept
};

}  // namespace nodus::host
