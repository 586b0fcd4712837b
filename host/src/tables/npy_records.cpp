// From blocks of the file to records, and from a record's numbers to values.
#include "npy_records.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/shortest.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace nodus::host {

namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;

template <typename T> T load(char const* record, NpyField const& field)
{
    std::array<char, sizeof(T)> bytes;
    std::memcpy(bytes.data(), record + field.offset, sizeof(T));
    if (field.isSwapped)
        std::ranges::reverse(bytes);
    return std::bit_cast<T>(bytes);
}

// Calls work with the number, in its own type; a byte is a number, too, and no character.
template <typename Work> auto withNumber(char const* record, NpyField const& field, Work work)
{
    using Kind = NpyField::Kind;
    if (field.kind == Kind::real)
        return field.size == 4 ? work(load<float>(record, field))
                               : work(load<double>(record, field));
    bool const isSigned = field.kind == Kind::whole;
    switch (field.size) {
    case 1:
        return isSigned ? work(std::int16_t{load<std::int8_t>(record, field)})
                        : work(std::int16_t{load<std::uint8_t>(record, field)});
    case 2:
        return isSigned ? work(load<std::int16_t>(record, field))
                        : work(load<std::uint16_t>(record, field));
    case 4:
        return isSigned ? work(load<std::int32_t>(record, field))
                        : work(load<std::uint32_t>(record, field));
    default:
        return isSigned ? work(load<std::int64_t>(record, field))
                        : work(load<std::uint64_t>(record, field));
    }
}

template <typename To, typename From> bool store(From number, std::byte* to)
{
    To value{};
    if constexpr (std::is_floating_point_v<To>) {
        value = static_cast<To>(number);
        if (std::isinf(value) && std::isfinite(static_cast<double>(number)))
            return false;
    } else if constexpr (std::is_floating_point_v<From>) {
        // Every Int32 and UInt32 is a Double, too.
        double const real = number;
        if (!(real >= static_cast<double>(std::numeric_limits<To>::min()) &&
              real <= static_cast<double>(std::numeric_limits<To>::max()) &&
              real == std::trunc(real)))
            return false;
        value = static_cast<To>(real);
    } else {
        if (!std::in_range<To>(number))
            return false;
        value = static_cast<To>(number);
    }
    std::memcpy(to, &value, sizeof value);
    return true;
}

}  // namespace

double Records::fractionRead() const
{
    return m_header.rows == 0 ? 0.0
                              : static_cast<double>(m_row) / static_cast<double>(m_header.rows);
}

RowBuffer::RowBuffer(ReadBytes read, std::size_t rowSize, std::size_t capacity)
    : m_read(std::move(read)), m_rowSize(rowSize), m_capacity(std::max(capacity, rowSize)),
      m_bytes(new char[m_capacity])
{
}

char const* RowBuffer::next()
{
    while (m_end - m_begin < m_rowSize) {
        std::memmove(m_bytes.get(), m_bytes.get() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
        std::size_t const got = m_read(m_bytes.get() + m_end, m_capacity - m_end);
        if (got == 0)
            return nullptr;
        m_end += got;
    }
    char const* const row = m_bytes.get() + m_begin;
    m_begin += m_rowSize;
    return row;
}

bool RowBuffer::isAtEnd()
{
    char further = 0;
    return m_begin == m_end && m_read(&further, 1) == 0;
}

NpyRecords::NpyRecords(std::string const& path) : m_file(path)
{
    ReadBytes const read = [this](char* to, std::size_t size) { return m_file.read(to, size); };
    m_header = readRecordsHeader(read, m_file.name());
    m_rows.emplace(read, m_header.recordSize, kBufferSize);
}

bool NpyRecords::next(TextBuffer* to)
{
    if (m_row == m_header.rows)
        return false;
    char const* const row = m_rows->next();
    if (row == nullptr)
        throw Fault(m_file.name() + ": ends in row " + std::to_string(m_row) + " of " +
                    std::to_string(m_header.rows));
    if (to != nullptr)
        to->append({row, m_header.recordSize});
    ++m_row;
    return true;
}

bool storeNumber(char const* record, NpyField const& field, TypeId type, std::byte* to)
{
    return withNumber(record, field, [&](auto number) {
        switch (type) {
        case TypeId::Bool:
            return (number == 0 || number == 1 || field.kind == NpyField::Kind::boolean) &&
                   store<std::uint8_t>(number != 0 ? 1 : 0, to);
        case TypeId::UInt8:
            return store<std::uint8_t>(number, to);
        case TypeId::Int32:
            return store<std::int32_t>(number, to);
        case TypeId::UInt32:
            return store<std::uint32_t>(number, to);
        case TypeId::Double:
            return store<double>(number, to);
        default:
            return store<float>(number, to);
        }
    });
}

std::string numberText(char const* record, NpyField const& field)
{
    return withNumber(record, field, [](auto number) {
        char digits[kNumberRoom];
        if constexpr (std::is_floating_point_v<decltype(number)>)
            return std::string(digits, writeShortest(digits, number));
        else
            return std::string(digits, std::to_chars(digits, std::end(digits), number).ptr);
    });
}

}  // namespace nodus::host
