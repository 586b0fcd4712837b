// Result files that appear whole or not at all.
#pragma once

#include <exception>
#include <memory>
#include <string>
#include <string_view>

namespace nodus::host {

// Whoever read what is written has closed its end of the pipe. Nothing is wrong, but there is
// nothing left to do.
class ClosedPipe : public std::exception {
public:
    char const* what() const noexcept override { return "nobody reads the pipe any more"; }
};

// What is written stays invisible until commit puts it in the place of the target; without commit
// nothing changes, whatever ends the process. A target that exists and is no regular file (a pipe,
// a device) is written directly. Not for more than one thread at a time. Faults name the target.
class OutputFile {
public:
    // "-" is standard output. Throws Fault when the target cannot be written.
    static OutputFile open(std::string const& target);
    // An open descriptor that is written directly and stays open; name is for messages.
    static OutputFile onDescriptor(int descriptor, std::string name);

    OutputFile(OutputFile&&) noexcept;
    OutputFile& operator=(OutputFile&&) = delete;
    ~OutputFile();

    // What is written to a pipe that nobody reads any more goes nowhere, and no ClosedPipe is
    // thrown.
    void outliveReader() { m_outlivesReader = true; }

    // Collects small pieces. Throws Fault when the system cannot take them, or ClosedPipe.
    void write(std::string_view text);
    void flush();

    // Whether what was written can be written again: not to a pipe or a device.
    bool mayRewrite() const { return !m_isDirect; }
    void rewrite(std::size_t offset, std::string_view text);

    // What messages call it.
    std::string const& name() const { return m_target; }

    // Everything is written, the file stands under its name.
    void commit();

private:
    OutputFile() = default;
    void writeThrough(std::string_view text);
    [[noreturn]] void fail(int error) const;
    void rename();

    std::string m_target, m_folder, m_temporary, m_pending;
    int m_descriptor = -1;
    bool m_isDirect = false, m_ownsDescriptor = false, m_outlivesReader = false;
};

// A file of that text. Throws as OutputFile does.
inline void writeFile(std::string const& path, std::string_view text)
{
    auto file = OutputFile::open(path);
    file.write(text);
    file.commit();
}

// Removes what a process that is being interrupted would leave behind. For signal handlers: calls
// nothing that is not safe there.
void removeUnfinishedFiles() noexcept;

}  // namespace nodus::host
