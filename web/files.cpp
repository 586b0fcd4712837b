// Files of the host where there is no file system: texts by name, put there and taken by
// JavaScript.
#include "files.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"
#include "nodus/host/output_file.h"

#include <algorithm>
#include <map>

namespace nodus::host {

std::string& fileText(std::string const& name)
{
    static std::map<std::string, std::string> texts;
    return texts[name];
}

std::string inputName(std::string const& path) { return path; }

InputFile::InputFile(std::string const& path)
    : m_name(path), m_descriptor(0), m_size(fileText(path).size())
{
}

InputFile::~InputFile() = default;

std::size_t InputFile::read(char* to, std::size_t size)
{
    // The descriptor is how much was read.
    std::string const& text = fileText(m_name);
    std::size_t const count = text.copy(to, size, static_cast<std::size_t>(m_descriptor));
    m_descriptor += static_cast<int>(count);
    return count;
}

OutputFile OutputFile::open(std::string const& target)
{
    OutputFile file;
    file.m_target = target;
    return file;
}

OutputFile::OutputFile(OutputFile&&) noexcept = default;
OutputFile::~OutputFile() = default;

void OutputFile::write(std::string_view text) { m_pending += text; }
void OutputFile::flush() {}
void OutputFile::rewrite(std::size_t offset, std::string_view text)
{
    m_pending.replace(offset, text.size(), text);
}
void OutputFile::commit() { fileText(m_target) = std::move(m_pending); }

}  // namespace nodus::host
