// The rows around a frame: read ahead as far as needed, and forgotten behind.
#include "row_window.h"

#include <algorithm>

namespace nodus::host {

void RowsOfFrames::clear()
{
    rows.clear();
    uses.clear();
    m_index.clear();
}

bool RowWindow::readNext()
{
    m_read.clear();
    if (!m_table.readRow(m_read))
        return false;
    m_rows.push_back({std::string(m_read.row(0)), m_read.rows.front().line});
    return true;
}

bool RowWindow::add(std::int32_t frame, RowsOfFrames& to)
{
    std::int64_t const first = std::max<std::int64_t>(0, std::int64_t{frame} + m_shifts.front());
    std::int64_t const last = std::int64_t{frame} + m_shifts.back();
    for (; m_first < first; ++m_first)
        if (!m_rows.empty())
            m_rows.pop_front();
        else if (!m_table.skipRow())
            return false;
    while (m_first + std::ssize(m_rows) <= last && readNext()) {
    }
    std::int64_t const end = m_first + std::ssize(m_rows);
    if (frame >= end)
        return false;
    for (std::int32_t const shift : m_shifts) {
        std::int64_t const wanted = std::int64_t{frame} + shift;
        std::int64_t const row = std::clamp<std::int64_t>(wanted, 0, end - 1);
        auto const [known, isNew] = to.m_index.try_emplace(row, to.rows.rows.size());
        if (isNew) {
            Kept const& kept = m_rows[static_cast<std::size_t>(row - m_first)];
            std::size_t const begin = to.rows.text.size();
            to.rows.text.append(kept.text);
            to.rows.rows.push_back({begin, to.rows.text.size(), kept.line});
        }
        to.uses.push_back({known->second, row != wanted});
    }
    return true;
}

}  // namespace nodus::host
