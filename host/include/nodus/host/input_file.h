// Files that are read, standard input among them.
#pragma once

#include <cstddef>
#include <string>

namespace nodus::host {

// Whether a path stands for standard input, or standard output: "-".
inline bool isStandardStream(std::string const& path) { return path == "-"; }

// What messages call it: "standard input", or the path.
std::string inputName(std::string const& path);

// For one thread at a time.
class InputFile {
public:
    // Throws Fault when it cannot be read.
    explicit InputFile(std::string const& path);
    ~InputFile();
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;

    std::string const& name() const { return m_name; }
    // How many bytes there were to read when it was opened; 0 when it is no regular file.
    std::size_t size() const { return m_size; }

    // Up to size bytes, as many as there are now; 0 at the end of the file. Throws Fault.
    std::size_t read(char* to, std::size_t size);

private:
    std::string m_name;
    int m_descriptor;
    std::size_t m_size = 0;
};

// All of a file. Throws Fault when it cannot be read, or is larger than one gigabyte.
std::string readFile(std::string const& path);

}  // namespace nodus::host
