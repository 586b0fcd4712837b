// Reading and writing the dictionary at the beginning, a literal of Python.
#include "npy_header.h"

#include "nodus/host/diagnostics.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>

namespace nodus::host {

static_assert(std::endian::native == std::endian::little);

namespace {

constexpr std::string_view kMagic = "\x93NUMPY";
constexpr std::size_t kAlignment = 64;  // of the first record
constexpr std::size_t kLongestHeader = std::size_t{16} * 1024 * 1024;

void readWhole(InputFile& file, char* to, std::size_t size)
{
    while (size != 0) {
        std::size_t const got = file.read(to, size);
        if (got == 0)
            throw Fault(file.name() + ": ends within its header");
        to += got;
        size -= got;
    }
}

// As much of Python's literals as such a header has.
class HeaderParser {
public:
    HeaderParser(std::string_view text, std::string const& name) : m_rest(text), m_name(name) {}

    NpyHeader parse()
    {
        NpyHeader header;
        expect('{');
        while (!accepts('}')) {
            std::string const key = text();
            expect(':');
            if (key == "descr")
                readFields(header);
            else if (key == "fortran_order")
                word();
            else if (key == "shape")
                readShape(header);
            else
                broken();
            accepts(',');
        }
        return header;
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
    void word()
    {
        skipBlanks();
        m_rest.remove_prefix(std::min(m_rest.find_first_of(",}"), m_rest.size()));
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

    void readShape(NpyHeader& header)
    {
        expect('(');
        std::vector<std::uint64_t> sides;
        while (!accepts(')')) {
            sides.push_back(number());
            accepts(',');
        }
        if (sides.size() != 1)
            throw Fault(m_name + ": wants one dimension, the rows, not " +
                        std::to_string(sides.size()));
        header.rows = sides.front();
    }

    void readFields(NpyHeader& header)
    {
        if (!accepts('['))
            throw Fault(m_name + ": wants a structured array, a field with a name for each column");
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
            addField(header, name, type);
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
            throw Fault(m_name + ": field " + inQuotes(name) + " is " + inQuotes(type) +
                        "; a column is b1, i1 to i8, u1 to u8, f4 or f8");
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

}  // namespace

NpyHeader readNpyHeader(InputFile& file)
{
    std::array<char, 12> start{};
    readWhole(file, start.data(), 10);
    if (!std::string_view(start.data(), start.size()).starts_with(kMagic))
        throw Fault(file.name() + ": is no NumPy file");
    std::size_t const version = static_cast<unsigned char>(start[6]);
    if (version < 1 || version > 3)
        throw Fault(file.name() + ": is of version " + std::to_string(version) +
                    " of NumPy's format, of which 1 to 3 are known");
    if (version > 1)
        readWhole(file, start.data() + 10, 2);
    std::size_t size = 0;
    std::memcpy(&size, start.data() + 8, version > 1 ? 4 : 2);
    if (size > kLongestHeader)
        throw Fault(file.name() + ": has a header that is too long");
    std::string text(size, '\0');
    readWhole(file, text.data(), size);
    NpyHeader header = HeaderParser(text, file.name()).parse();
    if (header.fields.empty())
        throw Fault(file.name() + ": wants at least one field");
    return header;
}

std::string npyHeader(std::vector<NpyColumn> const& columns, std::uint64_t rows)
{
    std::string text = "{'descr': [";
    for (NpyColumn const& column : columns)
        ((((text += '(') += literal(column.name)) += ", '") += typeText(column.type)) += "'), ";
    std::string const digits = std::to_string(rows);
    text += "], 'fortran_order': False, 'shape': (" + std::string(20 - digits.size(), ' ') +
            digits + ",), }";
    bool const isPlain =
        std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) > 126; });
    char const version = !isPlain ? 3 : text.size() > UINT16_MAX - kAlignment ? 2 : 1;
    std::size_t const before = version == 1 ? 10 : 12;
    std::size_t const whole = before + text.size() + 1;
    text += std::string((kAlignment - whole % kAlignment) % kAlignment, ' ') + '\n';
    std::string header(kMagic);
    header += version;
    header += '\0';
    for (std::size_t shift = 0; shift < 8 * (before - 8); shift += 8)
        header += static_cast<char>(text.size() >> shift & 0xFF);
    return header + text;
}

}  // namespace nodus::host
