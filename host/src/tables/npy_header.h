// The beginning of a NumPy file (.npy): a structured array, one field a column. The format is that
// of numpy.lib.format, versions 1 to 3.
#pragma once

#include "nodus/host/input_file.h"
#include "nodus/host/value_types.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

// A number in a record.
struct NpyField {
    enum class Kind : char { boolean = 'b', whole = 'i', natural = 'u', real = 'f' };
    std::string name;
    Kind kind;
    std::size_t size;  // in bytes: 1, 2, 4 or 8, of a real 4 or 8
    bool isSwapped;    // the byte order is not this machine's
    std::size_t offset;
};

struct NpyHeader {
    std::vector<NpyField> fields;
    std::size_t recordSize = 0;
    std::uint64_t rows = 0;
};

// Reads up to the first record. Throws Fault: no such file, an array without fields, or fields that
// are no numbers.
NpyHeader readNpyHeader(InputFile& file);

// Of records in this machine's byte order, without padding; as long for any number of rows.
struct NpyColumn {
    std::string name;
    TypeId type;  // of a number
};
std::string npyHeader(std::vector<NpyColumn> const& columns, std::uint64_t rows);

}  // namespace nodus::host
