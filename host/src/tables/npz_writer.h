// Results as an archive of NumPy (.npz): an array for each output.
#pragma once

#include "npy_header.h"

#include "nodus/host/output_file.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

// An array can be written when its rows are known: until then, what is too much for memory waits in
// a file without a name beside the target. For one thread at a time.
class NpzWriter {
public:
    // The file outlives it. Throws Fault for a name that an archive has no room for.
    NpzWriter(std::vector<NpyColumn> columns, OutputFile& file);
    ~NpzWriter();

    // Takes whole records, the columns side by side without padding. Throws Fault.
    void write(std::string_view records);
    // Writes the file. Throws Fault.
    void finish();

private:
    struct Column {
        NpyColumn what;
        std::size_t rowSize;
        std::string waiting;         // the last rows
        std::uint32_t checksum = 0;  // of the rows that are put aside
    };

    void putAside();
    void copyAside(Column const& column, std::uint64_t begin);
    void put(std::string_view bytes);

    std::vector<Column> m_columns;
    OutputFile& m_file;
    std::size_t m_recordSize = 0;
    std::uint64_t m_rowsAside = 0, m_written = 0;
    std::vector<std::uint64_t> m_stretches;  // numbers of rows that were put aside together
    int m_aside = -1;                        // the file, once there is one
};

}  // namespace nodus::host
