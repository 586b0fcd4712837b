// Tables in archives of NumPy (.npz): arrays of as many rows, side by side.
#pragma once

#include "npy_records.h"

#include <memory>
#include <string>
#include <vector>

struct zip;

namespace nodus::host {

// As numpy.savez and numpy.savez_compressed write them. Regular files alone, since the arrays are
// read all at once.
class NpzRecords final : public Records {
public:
    // Throws Fault.
    explicit NpzRecords(std::string const& path);
    bool next(TextBuffer* to) override;

private:
    struct Array {
        std::string array, name;  // of messages
        RowBuffer rows;
    };
    struct Discard {
        void operator()(zip* archive) const;
    };

    void addArray(std::uint64_t index, std::size_t bufferSize);

    std::string m_name;
    std::unique_ptr<zip, Discard> m_archive;  // outlives its members
    std::vector<Array> m_arrays;
};

}  // namespace nodus::host
