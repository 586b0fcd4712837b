// Which columns share bytes, and how many rows of all of them a cache holds.
#include "columns.h"

namespace nodus::host {

namespace {

// What is read and written should fit the first-level cache, but a call has its price, too: below
// kGoodRows the second-level cache is the better place, and only what overflows that makes blocks
// smaller.
constexpr std::size_t kFirstLevelAim = std::size_t{24} * 1024;
constexpr std::size_t kSecondLevelAim = std::size_t{512} * 1024;
constexpr std::size_t kMostRows = 1024, kGoodRows = 512, kLeastRows = 16;

// Of a column's bytes, so that any multiple of 16 rows is a multiple of a cache line.
constexpr std::size_t kUnit = 4;

std::size_t sizeOf(Column const& column) { return (column.size + kUnit - 1) / kUnit * kUnit; }

}  // namespace

void SharedBytes::place(std::size_t index)
{
    Column& column = m_columns[index];
    if (column.isOnce || m_isPlaced[index])
        return;
    m_isPlaced[index] = true;
    auto& same = m_free[sizeOf(column)];
    if (column.lastUse != Column::kForever && !same.empty()) {
        column.offset = same.back();
        same.pop_back();
        return;
    }
    column.offset = m_bytesPerRow;
    m_bytesPerRow += sizeOf(column);
}

void SharedBytes::release(std::size_t index, std::size_t step)
{
    Column const& column = m_columns[index];
    if (column.isOnce || column.lastUse != step || m_isFree[index])
        return;
    m_isFree[index] = true;
    m_free[sizeOf(column)].push_back(column.offset);
}

std::size_t rowsFor(std::size_t bytesPerRow)
{
    std::size_t rows = kMostRows;
    while (rows > kGoodRows && rows * bytesPerRow > kFirstLevelAim)
        rows /= 2;
    while (rows > kLeastRows && rows * bytesPerRow > kSecondLevelAim)
        rows /= 2;
    return rows;
}

}  // namespace nodus::host
