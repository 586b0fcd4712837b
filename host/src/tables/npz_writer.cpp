// Writing archives: members as they are, of which sizes and sums are known beforehand, so that
// nothing is written twice and the target may be a pipe. By hand, since libzip wants to seek in
// files of its own; what a zip file is made of is in PKWARE's APPNOTE.TXT, sections 4.3 and 4.5.3.
#include "npz_writer.h"

#include "nodus/host/diagnostics.h"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace nodus::host {

namespace {

constexpr std::size_t kMostWaiting = std::size_t{8} * 1024 * 1024;
constexpr std::size_t kPieceSize = std::size_t{256} * 1024;

constexpr std::uint16_t kVersion = 45;  // the first one with sizes of 64 bits
constexpr std::uint16_t kNamesAreUtf8 = 1 << 11;
constexpr std::uint16_t kFirstDay = 1 << 5 | 1;  // 1980-01-01: the same bytes at any time
constexpr std::uint32_t kIn64Bits = 0xFFFFFFFF;
constexpr std::size_t kLongestName = 0xFFFF;

template <typename... Numbers> std::string littleEndian(Numbers... numbers)
{
    std::string bytes;
    auto const add = [&](auto number) {
        for (std::size_t shift = 0; shift < 8 * sizeof number; shift += 8)
            bytes += static_cast<char>(number >> shift & 0xFF);
    };
    (add(numbers), ...);
    return bytes;
}

using Half = std::uint16_t;
using Word = std::uint32_t;
using Long = std::uint64_t;

// What both headers of a member have in common.
std::string memberHeader(std::uint32_t checksum, std::string const& name, Half extraSize)
{
    return littleEndian(kVersion, kNamesAreUtf8, Half{0} /* stored */, Half{0}, kFirstDay, checksum,
                        kIn64Bits, kIn64Bits, static_cast<Half>(name.size()), extraSize);
}

std::uint32_t sumOf(std::string_view bytes, std::uint32_t before = 0)
{
    return static_cast<std::uint32_t>(
        crc32_z(before, reinterpret_cast<Bytef const*>(bytes.data()), bytes.size()));
}

// Beside the target, or where the system has its files of no name.
int openAside(std::string const& target)
{
    std::string const folder = std::filesystem::path(target).parent_path().string();
    int descriptor =
        ::open(folder.empty() ? "." : folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    std::FILE* const anywhere = descriptor < 0 ? std::tmpfile() : nullptr;
    if (anywhere != nullptr) {
        descriptor = ::fcntl(::fileno(anywhere), F_DUPFD_CLOEXEC, 3);
        std::fclose(anywhere);
    }
    if (descriptor < 0)
        throw Fault("cannot write beside " + target + ": " + systemError(errno));
    return descriptor;
}

}  // namespace

NpzWriter::NpzWriter(std::vector<NpyColumn> columns, OutputFile& file) : m_file(file)
{
    for (NpyColumn& column : columns) {
        if (column.name.size() > kLongestName - 4)
            throw Fault("output " + inQuotes(column.name) + " has a name too long for .npz");
        std::size_t const rowSize = column.lanes * valueType(column.type).size;
        m_recordSize += rowSize;
        m_columns.push_back({std::move(column), rowSize, {}});
    }
}

NpzWriter::~NpzWriter()
{
    if (m_aside >= 0)
        ::close(m_aside);
}

void NpzWriter::write(std::string_view records)
{
    std::size_t offset = 0;
    for (Column& column : m_columns) {
        for (std::size_t at = offset; at < records.size(); at += m_recordSize)
            column.waiting.append(records.data() + at, column.rowSize);
        offset += column.rowSize;
    }
    if (m_columns.front().waiting.size() / m_columns.front().rowSize * m_recordSize > kMostWaiting)
        putAside();
}

void NpzWriter::putAside()
{
    if (m_aside < 0)
        m_aside = openAside(m_file.name());
    std::uint64_t const rows = m_columns.front().waiting.size() / m_columns.front().rowSize;
    for (Column& column : m_columns) {
        column.checksum = sumOf(column.waiting, column.checksum);
        for (std::string_view rest = column.waiting; !rest.empty();) {
            ssize_t const done = ::write(m_aside, rest.data(), rest.size());
            if (done < 0 && errno != EINTR)
                throw Fault("cannot write beside " + m_file.name() + ": " + systemError(errno));
            rest.remove_prefix(done < 0 ? 0 : static_cast<std::size_t>(done));
        }
        column.waiting.clear();
    }
    m_stretches.push_back(rows);
    m_rowsAside += rows;
}

void NpzWriter::put(std::string_view bytes)
{
    m_file.write(bytes);
    m_written += bytes.size();
}

// The column's rows are begin bytes behind the first column's in a record.
void NpzWriter::copyAside(Column const& column, std::uint64_t begin)
{
    std::string piece;
    std::uint64_t stretch = 0;
    for (std::uint64_t const rows : m_stretches) {
        std::uint64_t at = stretch + begin * rows;
        for (std::uint64_t const end = at + rows * column.rowSize; at < end;) {
            piece.resize(std::min<std::uint64_t>(kPieceSize, end - at));
            ssize_t const got =
                ::pread(m_aside, piece.data(), piece.size(), static_cast<off_t>(at));
            if (got == 0 || (got < 0 && errno != EINTR))
                throw Fault("cannot read beside " + m_file.name() + ": " +
                            systemError(got == 0 ? EIO : errno));
            auto const done = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
            put(std::string_view(piece).substr(0, done));
            at += done;
        }
        stretch += m_recordSize * rows;
    }
}

void NpzWriter::finish()
{
    std::string directory;
    std::uint64_t begin = 0;
    for (Column const& column : m_columns) {
        std::uint64_t const rows = m_rowsAside + column.waiting.size() / column.rowSize;
        std::string const header = arrayHeader(column.what, rows), name = column.what.name + ".npy";
        Long const inRows = rows * column.rowSize, size = header.size() + inRows, place = m_written;
        auto const checksum = static_cast<std::uint32_t>(crc32_combine(
            sumOf(header), sumOf(column.waiting, column.checksum), static_cast<z_off_t>(inRows)));
        put("PK\3\4" + memberHeader(checksum, name, 20));
        put(name);
        put(littleEndian(Half{1}, Half{16}, size, size) + header);
        copyAside(column, begin);
        put(column.waiting);
        begin += column.rowSize;
        constexpr Word kReadable = 0600U << 16;
        directory += "PK\1\2" + littleEndian(kVersion) + memberHeader(checksum, name, 28) +
                     littleEndian(Half{0}, Half{0}, Half{0}, kReadable, kIn64Bits) + name +
                     littleEndian(Half{1}, Half{24}, size, size, place);
    }
    Long const members = m_columns.size(), start = m_written, end = start + directory.size();
    put(directory);
    put("PK\6\6" + littleEndian(Long{44}, kVersion, kVersion, Word{0}, Word{0}, members, members,
                                Long{directory.size()}, start));
    put("PK\6\7" + littleEndian(Word{0}, end, Word{1}));
    put("PK\5\6" +
        littleEndian(Half{0}, Half{0}, Half{0xFFFF}, Half{0xFFFF}, kIn64Bits, kIn64Bits, Half{0}));
}

}  // namespace nodus::host
