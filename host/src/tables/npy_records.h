// Records of a NumPy file, as a stream, and the numbers in them.
#pragma once

#include "npy_header.h"

#include "nodus/host/text_buffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace nodus::host {

// For one thread at a time. Memory does not grow with the file.
class NpyRecords {
public:
    // Throws Fault.
    explicit NpyRecords(std::string const& path);

    NpyHeader const& header() const { return m_header; }
    double fractionRead() const;

    // Appends the bytes of the next record, or passes over it with null; false when there is none.
    // Throws Fault when the file ends before its last record.
    bool next(TextBuffer* to);

private:
    InputFile m_file;
    NpyHeader m_header;
    std::size_t m_capacity;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_begin = 0, m_end = 0;
    std::uint64_t m_row = 0;
};

// Stores a record's number as that type: rounded where that has fewer digits, never to an infinity,
// and only whole numbers as integers. False when the type has no such number.
bool storeNumber(char const* record, NpyField const& field, TypeId type, std::byte* to);

// What is written of it.
std::string numberText(char const* record, NpyField const& field);

}  // namespace nodus::host
