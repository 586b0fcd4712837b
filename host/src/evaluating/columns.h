// Columns of values, one a row, and the bytes that they share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace nodus::host {

// One value a row, side by side; with isOnce one for all.
struct Column {
    static constexpr std::size_t kForever = SIZE_MAX;

    std::size_t size;
    bool isOnce;
    std::size_t lastUse;     // the number of the step after which it is free
    std::size_t offset = 0;  // in bytes a row until the number of rows is known
};

// The place of a column that is read no more goes to the next one of its size, so that few bytes
// are hot. Columns with one value for all rows are left out.
class SharedBytes {
public:
    explicit SharedBytes(std::vector<Column>& columns)
        : m_columns(columns), m_isPlaced(columns.size()), m_isFree(columns.size())
    {
    }

    void place(std::size_t column);
    // Does nothing when it is read after that step.
    void release(std::size_t column, std::size_t step);
    std::size_t bytesPerRow() const { return m_bytesPerRow; }

private:
    std::vector<Column>& m_columns;
    std::vector<bool> m_isPlaced, m_isFree;
    std::unordered_map<std::size_t, std::vector<std::size_t>> m_free;  // offsets, by size
    std::size_t m_bytesPerRow = 0;
};

// How many rows to take at a time.
std::size_t rowsFor(std::size_t bytesPerRow);

}  // namespace nodus::host
