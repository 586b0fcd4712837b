// Reading archives by libzip, which finds and unpacks their members and checks their sums.
#include "npz_records.h"

#include "nodus/host/diagnostics.h"

#include <zip.h>

#include <algorithm>
#include <filesystem>
#include <string_view>

namespace nodus::host {

namespace {

constexpr std::size_t kBufferSizes = std::size_t{16} * 1024 * 1024;  // of all arrays together

}  // namespace

void NpzRecords::Discard::operator()(zip* archive) const { zip_discard(archive); }

NpzRecords::NpzRecords(std::string const& path) : m_name(path)
{
    if (std::filesystem::exists(path) && !std::filesystem::is_regular_file(path))
        throw Fault(m_name + ": an archive can be read from a regular file only");
    int code = 0;
    m_archive.reset(zip_open(path.c_str(), ZIP_RDONLY, &code));
    if (m_archive == nullptr) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        std::string const why = zip_error_strerror(&error);
        zip_error_fini(&error);
        throw Fault("cannot read " + m_name + ": " + why);
    }
    auto const count = static_cast<std::uint64_t>(zip_get_num_entries(m_archive.get(), 0));
    if (count == 0)
        throw Fault(m_name + ": wants at least one array");
    std::size_t const bufferSize =
        std::clamp(kBufferSizes / count, std::size_t{4096}, std::size_t{256} * 1024);
    for (std::uint64_t index = 0; index < count; ++index)
        addArray(index, bufferSize);
}

void NpzRecords::addArray(std::uint64_t index, std::size_t bufferSize)
{
    constexpr std::string_view kExtension = ".npy";
    char const* const stored = zip_get_name(m_archive.get(), index, 0);
    std::string array = stored == nullptr ? "" : stored;
    if (!array.ends_with(kExtension))
        throw Fault(m_name + ": its member " + inQuotes(array) + " is no array (.npy)");
    array.resize(array.size() - kExtension.size());
    std::string const name = m_name + ": array " + inQuotes(array);

    std::shared_ptr<zip_file> const member(zip_fopen_index(m_archive.get(), index, 0),
                                           [](zip_file* opened) {
                                               if (opened != nullptr)
                                                   zip_fclose(opened);
                                           });
    if (member == nullptr)
        throw Fault(name + ": " + zip_strerror(m_archive.get()));
    ReadBytes const read = [member, name](char* to, std::size_t size) {
        auto const got = zip_fread(member.get(), to, size);
        if (got < 0)
            throw Fault(name + ": " + zip_file_strerror(member.get()));
        return static_cast<std::size_t>(got);
    };
    NpyHeader const header = readArrayHeader(read, name, array);
    if (m_arrays.empty())
        m_header.rows = header.rows;
    else if (m_header.rows != header.rows)
        throw Fault(name + ": has " + std::to_string(header.rows) + " rows, " +
                    inQuotes(m_arrays.front().array) + " has " + std::to_string(m_header.rows));
    for (NpyField field : header.fields) {
        field.offset += m_header.recordSize;
        m_header.fields.push_back(field);
    }
    m_header.recordSize += header.recordSize;
    m_arrays.push_back({array, name, RowBuffer(read, header.recordSize, bufferSize)});
}

bool NpzRecords::next(TextBuffer* to)
{
    bool const isEnd = m_row == m_header.rows;
    for (Array& array : m_arrays) {
        if (isEnd) {
            // Reading to the end is also what checks the sum.
            if (!array.rows.isAtEnd())
                throw Fault(array.name + ": goes on behind its last row");
            continue;
        }
        char const* const row = array.rows.next();
        if (row == nullptr)
            throw Fault(array.name + ": ends in row " + std::to_string(m_row) + " of " +
                        std::to_string(m_header.rows));
        if (to != nullptr)
            to->append({row, array.rows.rowSize()});
    }
    m_row += isEnd ? 0 : 1;
    return !isEnd;
}

}  // namespace nodus::host
