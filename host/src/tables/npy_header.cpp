// Reading and writing the dictionary at the beginning, a literal of Python.
#include "npy_header.h"

#include "nodus/host/diagnostics.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>

namespace nodus::host {

static_assert(std::endian::native == std::endian::little);

namespace {

constexpr std::string_view kMagic = "\x93NUMPY";
constexpr std::size_t kAlignment = 64;  // of the first record
constexpr std::size_t kLongestHeader = std::size_t{16} * 1024 * 1024;

void readWhole(ReadBytes const& read, std::string const& name, char* to, std::size_t size)
{
    while (size != 0) {
        std::size_t const got = read(to, size);
        if (got == 0)
            throw Fault(name + ": ends within its header");
        to += got;
        size -= got;
    }
}

// What the dictionary says.
struct Array {
    NpyHeader header;
    std::vector<std::uint64_t> shape;
    bool isStructured = false, isFortran = false;
};

// As much of Python's literals as such a header has.
class HeaderParser {
public:
    HeaderParser(std::string_view text, std::string const& name) : m_rest(text), m_name(name) {}

    Array parse()
    {
        Array array;
        expect('{');
        while (!accepts('}')) {
            std::string const key = text();
            expect(':');
            if (key == "descr")
                readType(array);
            else if (key == "fortran_order")
                array.isFortran = word() == "True";
            else if (key == "shape")
                array.shape = shape();
            else
                broken();
            accepts(',');
        }
        return array;
    }

private:
    [[noreturn]] void broken() const { throw Fault(m_name + ": has a header that is no NumPy's"); }

    void skipBlanks()
    {
        while (!m_rest.empty() && (m_rest.front() == ' ' || m_rest.front() == '\n'))
            m_rest.remove_prefix(1);
    }
    bool accepts(char c)
    {
        skipBlanks();
        if (!m_rest.starts_with(c))
            return false;
        m_rest.remove_prefix(1);
        return true;
    }
    void expect(char c)
    {
        if (!accepts(c))
            broken();
    }
    std::string_view word()
    {
        skipBlanks();
        std::string_view const read = m_rest.substr(0, m_rest.find_first_of(",}"));
        m_rest.remove_prefix(read.size());
        return read;
    }
    std::string text()
    {
        skipBlanks();
        if (m_rest.empty() || (m_rest.front() != '\'' && m_rest.front() != '"'))
            broken();
        char const quote = m_rest.front();
        m_rest.remove_prefix(1);
        std::string read;
        while (!m_rest.starts_with(quote)) {
            if (m_rest.starts_with('\\'))
                m_rest.remove_prefix(1);
            if (m_rest.empty())
                broken();
            read += m_rest.front();
            m_rest.remove_prefix(1);
        }
        m_rest.remove_prefix(1);
        return read;
    }
    std::uint64_t number()
    {
        skipBlanks();
        std::uint64_t read = 0;
        auto const [end, error] =
            std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), read);
        if (error != std::errc{})
            broken();
        m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.data()));
        return read;
    }

    std::vector<std::uint64_t> shape()
    {
        expect('(');
        std::vector<std::uint64_t> sides;
        while (!accepts(')')) {
            sides.push_back(number());
            accepts(',');
        }
        return sides;
    }

    void readType(Array& array)
    {
        array.isStructured = accepts('[');
        if (!array.isStructured)
            return addField(array.header, "", text());
        while (!accepts(']')) {
            expect('(');
            std::string const name = text();
            expect(',');
            std::string const type = text();
            if (accepts(',') && !accepts(')'))
                throw Fault(m_name + ": field " + inQuotes(name) +
                            " has several numbers a row; give a field for each");
            accepts(')');
            accepts(',');
            addField(array.header, name, type);
        }
    }

    void addField(NpyHeader& header, std::string const& name, std::string_view type)
    {
        std::size_t size = 0;
        auto const [end, error] =
            type.size() < 3 ? std::from_chars_result{nullptr, std::errc::invalid_argument}
                            : std::from_chars(type.data() + 2, type.data() + type.size(), size);
        bool const isSized = error == std::errc{} && end == type.data() + type.size();
        char const kind = isSized ? type[1] : '\0';
        // Bytes without a name only move the next field to its place.
        if (kind == 'V' && name.empty()) {
            header.recordSize += size;
            return;
        }
        bool const isPower = size == 1 || size == 2 || size == 4 || size == 8;
        if (!((kind == 'b' && size == 1) || ((kind == 'i' || kind == 'u') && isPower) ||
              (kind == 'f' && (size == 4 || size == 8))))
            throw Fault(m_name + (name.empty() ? ": its type" : ": field " + inQuotes(name)) +
                        " is " + inQuotes(type) + "; a column is b1, i1 to i8, u1 to u8, f4 or f8");
        header.fields.push_back(
            {name, static_cast<NpyField::Kind>(kind), size, type[0] == '>', header.recordSize});
        header.recordSize += size;
    }

    std::string_view m_rest;
    std::string const& m_name;
};

std::string_view typeText(TypeId type)
{
    switch (type) {
    case TypeId::Bool:
        return "|b1";
    case TypeId::UInt8:
        return "|u1";
    case TypeId::Int32:
        return "<i4";
    case TypeId::UInt32:
        return "<u4";
    case TypeId::Double:
        return "<f8";
    default:
        return "<f4";
    }
}

std::string literal(std::string_view text)
{
    std::string quoted = "'";
    for (char const c : text) {
        if (c == '\'' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + "'";
}

Array readArray(ReadBytes const& read, std::string const& name)
{
    std::array<char, 12> start{};
    readWhole(read, name, start.data(), 10);
    if (!std::string_view(start.data(), start.size()).starts_with(kMagic))
        throw Fault(name + ": is no NumPy file");
    std::size_t const version = static_cast<unsigned char>(start[6]);
    if (version < 1 || version > 3)
        throw Fault(name + ": is of version " + std::to_string(version) +
                    " of NumPy's format, of which 1 to 3 are known");
    if (version > 1)
        readWhole(read, name, start.data() + 10, 2);
    std::size_t size = 0;
    std::memcpy(&size, start.data() + 8, version > 1 ? 4 : 2);
    if (size > kLongestHeader)
        throw Fault(name + ": has a header that is too long");
    std::string text(size, '\0');
    readWhole(read, name, text.data(), size);
    return HeaderParser(text, name).parse();
}

// The names of so many lanes; none for a number that no type has.
std::span<std::string_view const> laneNames(std::uint64_t lanes)
{
    for (TypeId const id : {TypeId::Float, TypeId::Float2, TypeId::Float3, TypeId::Float4,
                            TypeId::TQS, TypeId::Matrix4x4})
        if (auto const names = valueType(id).laneNames; names.size() == lanes)
            return names;
    return {};
}

// The beginning of a file with that dictionary.
std::string file(std::string text)
{
    bool const isPlain =
        std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) > 126; });
    int const version = !isPlain ? 3 : text.size() > UINT16_MAX - kAlignment ? 2 : 1;
    std::size_t const before = version == 1 ? 10 : 12;
    std::size_t const whole = before + text.size() + 1;
    text += std::string((kAlignment - whole % kAlignment) % kAlignment, ' ') + '\n';
    std::string header(kMagic);
    header += static_cast<char>(version);
    header += '\0';
    for (std::size_t shift = 0; shift < 8 * (before - 8); shift += 8)
        header += static_cast<char>(text.size() >> shift & 0xFF);
    return header + text;
}

}  // namespace

NpyHeader readRecordsHeader(ReadBytes const& read, std::string const& name)
{
    Array array = readArray(read, name);
    if (!array.isStructured)
        throw Fault(name + ": wants a structured array, a field with a name for each column");
    if (array.shape.size() != 1)
        throw Fault(name + ": wants one dimension, the rows, not " +
                    std::to_string(array.shape.size()));
    if (array.header.fields.empty())
        throw Fault(name + ": wants at least one field");
    array.header.rows = array.shape.front();
    return array.header;
}

NpyHeader readArrayHeader(ReadBytes const& read, std::string const& name, std::string const& array)
{
    auto const [type, shape, isStructured, isFortran] = readArray(read, name);
    if (isStructured || type.fields.empty())
        throw Fault(name + ": is no array of numbers; structured arrays are for .npy");
    if (shape.size() != 1 && shape.size() != 2)
        throw Fault(name + ": wants one dimension, the rows, or two, not " +
                    std::to_string(shape.size()));
    if (isFortran)
        throw Fault(name + ": is in Fortran's order; save numpy.ascontiguousarray of it");
    auto const lanes = laneNames(shape.size() == 1 ? 1 : shape[1]);
    if (lanes.empty())
        throw Fault(name + ": has " + std::to_string(shape[1]) +
                    " numbers a row; a vector has 1 to 4, 12 (TQS) or 16 (Matrix4x4)");
    NpyHeader header{{}, lanes.size() * type.recordSize, shape[0]};
    for (std::size_t lane = 0; lane < lanes.size(); ++lane) {
        NpyField field = type.fields.front();
        field.name = array + (lanes.size() == 1 ? "" : ".") + std::string(lanes[lane]);
        field.offset = lane * field.size;
        header.fields.push_back(field);
    }
    return header;
}

std::string recordsHeader(std::vector<NpyColumn> const& columns, std::uint64_t rows)
{
    std::string text = "{'descr': [";
    for (NpyColumn const& column : columns)
        ((((text += '(') += literal(column.name)) += ", '") += typeText(column.type)) += "'), ";
    std::string const digits = std::to_string(rows);
    return file(text + "], 'fortran_order': False, 'shape': (" +
                std::string(20 - digits.size(), ' ') + digits + ",), }");
}

std::string arrayHeader(NpyColumn const& column, std::uint64_t rows)
{
    std::string const lanes = column.lanes == 1 ? "" : std::to_string(column.lanes);
    return file("{'descr': '" + std::string(typeText(column.type)) +
                "', 'fortran_order': False, 'shape': (" + std::to_string(rows) + "," + lanes +
                "), }");
}

}  // namespace nodus::host
