// Tables of NumPy as streams of records, and the numbers in them.
#pragma once

#include "npy_header.h"

#include "nodus/host/input_file.h"
#include "nodus/host/text_buffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nodus::host {

// For one thread at a time. Memory does not grow with the file.
class Records {
public:
    virtual ~Records() = default;

    std::vector<NpyField> const& fields() const { return m_header.fields; }
    double fractionRead() const;

    // Appends the bytes of the next record, or passes over it with null; false when there is none.
    // Throws Fault when the file ends before its last record, or is broken.
    virtual bool next(TextBuffer* to) = 0;

protected:
    NpyHeader m_header;
    std::uint64_t m_row = 0;
};

// Bytes on their way from a file to rows of one size.
class RowBuffer {
public:
    RowBuffer(ReadBytes read, std::size_t rowSize, std::size_t capacity);

    // The next row, until the next call; null when the file ends before its last byte.
    char const* next();
    // Whether nothing follows.
    bool isAtEnd();
    std::size_t rowSize() const { return m_rowSize; }

private:
    ReadBytes m_read;
    std::size_t m_rowSize, m_capacity;
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_begin = 0, m_end = 0;
};

// A structured array.
class NpyRecords final : public Records {
public:
    // Throws Fault.
    explicit NpyRecords(std::string const& path);
    bool next(TextBuffer* to) override;

private:
    InputFile m_file;
    std::optional<RowBuffer> m_rows;
};

// Stores a record's number as that type: rounded where that has fewer digits, never to an infinity,
// and only whole numbers as integers. False when the type has no such number.
bool storeNumber(char const* record, NpyField const& field, TypeId type, std::byte* to);

// What is written of it.
std::string numberText(char const* record, NpyField const& field);

}  // namespace nodus::host
