// Archives of NumPy where there is no file system: refused.
#include "tables/npz_records.h"
#include "tables/npz_writer.h"

#include "nodus/host/diagnostics.h"

namespace nodus::host {

NpzRecords::NpzRecords(std::string const& path) : m_name(path)
{
    throw Fault(m_name + ": archives can be read from a regular file only");
}
bool NpzRecords::next(TextBuffer*) { return false; }
void NpzRecords::Discard::operator()(zip*) const {}

NpzWriter::NpzWriter(std::vector<NpyColumn> /*columns*/, OutputFile& file) : m_file(file)
{
    throw Fault("archives can be written to a regular file only");
}
NpzWriter::~NpzWriter() = default;
void NpzWriter::write(std::string_view) {}
void NpzWriter::finish() {}

}  // namespace nodus::host
