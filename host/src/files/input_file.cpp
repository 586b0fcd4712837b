// Opening and reading, with words for what the system says.
#include "nodus/host/input_file.h"

#include "nodus/host/diagnostics.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace nodus::host {

std::string inputName(std::string const& path)
{
    return isStandardStream(path) ? "standard input" : path;
}

InputFile::InputFile(std::string const& path)
    : m_name(inputName(path)),
      m_descriptor(isStandardStream(path) ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)
                                          : ::open(path.c_str(), O_RDONLY | O_CLOEXEC))
{
    if (m_descriptor < 0)
        throw Fault("cannot read " + m_name + ": " + systemError(errno));
    struct stat status {};
    // Somebody may have read the beginning of standard input.
    off_t const begin = ::lseek(m_descriptor, 0, SEEK_CUR);
    if (::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode) && begin < status.st_size)
        m_size = static_cast<std::size_t>(status.st_size - begin);
    ::posix_fadvise(m_descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
}

InputFile::~InputFile() { ::close(m_descriptor); }

std::size_t InputFile::read(char* to, std::size_t size)
{
    ssize_t got = 0;
    do
        got = ::read(m_descriptor, to, size);
    while (got < 0 && errno == EINTR);
    if (got < 0)
        throw Fault("cannot read " + m_name + ": " + systemError(errno));
    return static_cast<std::size_t>(got);
}

}  // namespace nodus::host
