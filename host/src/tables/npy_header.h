// The beginning of an array as NumPy saves it (.npy). The format is that of numpy.lib.format,
// versions 1 to 3.
#pragma once

#include "nodus/host/value_types.h"

#include <cstddef>
#include <cstdint>
#include <functional>
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

// Up to so many bytes, as many as there are now; 0 at the end.
using ReadBytes = std::function<std::size_t(char*, std::size_t)>;

// Read up to the first record. Throw Fault, in front of which name stands: no such array, or fields
// that are no numbers.
// Of a structured array, a field for each column.
NpyHeader readRecordsHeader(ReadBytes const& read, std::string const& name);
// Of an array of numbers, with one dimension or two: a field for each number of a row. Those of a
// vector are called as lanes are: "position.x".
NpyHeader readArrayHeader(ReadBytes const& read, std::string const& name, std::string const& array);

struct NpyColumn {
    std::string name;
    TypeId type;  // of a number
    std::size_t lanes = 1;
};
// Of records in this machine's byte order, without padding; as long for any number of rows.
std::string recordsHeader(std::vector<NpyColumn> const& columns, std::uint64_t rows);
// Of one column alone.
std::string arrayHeader(NpyColumn const& column, std::uint64_t rows);

}  // namespace nodus::host
