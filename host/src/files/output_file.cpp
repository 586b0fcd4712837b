// Writing beside the target and renaming over it. A file without a name is best, since not even a
// kill leaves it; where the file system has none, a named one is removed by whoever ends first.
#include "nodus/host/output_file.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

namespace nodus::host {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPendingSize = std::size_t{16} * 1024;

// Temporary names that exist right now, where a signal handler finds them.
struct TemporaryName {
    std::atomic<bool> isTaken{false};
    std::atomic<bool> isFile{false};
    char path[PATH_MAX];
};
constinit std::array<TemporaryName, 8> g_temporaries{};

void registerTemporary(std::string const& path)
{
    for (TemporaryName& name : g_temporaries)
        if (path.size() < sizeof name.path && !name.isTaken.exchange(true)) {
            std::memcpy(name.path, path.c_str(), path.size() + 1);
            name.isFile = true;
            return;
        }
}

void forgetTemporary(std::string const& path)
{
    for (TemporaryName& name : g_temporaries)
        if (name.isFile && path == name.path) {
            name.isFile = false;
            name.isTaken = false;
        }
}

std::string temporaryName(std::string const& target, int attempt)
{
    fs::path const path(target);
    return (path.parent_path() / ("." + path.filename().string() + "." +
                                  std::to_string(::getpid()) + "." + std::to_string(attempt)))
        .string();
}

}  // namespace

void removeUnfinishedFiles() noexcept
{
    for (TemporaryName& name : g_temporaries)
        if (name.isFile)
            ::unlink(name.path);
}

OutputFile OutputFile::onDescriptor(int descriptor, std::string name)
{
    OutputFile file;
    file.m_target = std::move(name);
    file.m_descriptor = descriptor;
    file.m_isDirect = true;
    return file;
}

OutputFile OutputFile::open(std::string const& target)
{
    if (isStandardStream(target))
        return onDescriptor(STDOUT_FILENO, "standard output");
    OutputFile file;
    file.m_target = target;
    file.m_ownsDescriptor = true;

    struct stat status {};
    bool const exists = ::stat(target.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        file.m_isDirect = true;
        file.m_descriptor = ::open(target.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
        if (file.m_descriptor < 0)
            file.fail(errno);
        return file;
    }
    if (exists && ::access(target.c_str(), W_OK) != 0)
        file.fail(errno);

    // A link stays a link: what it leads to is replaced.
    std::error_code ignored;
    fs::path const real = exists ? fs::canonical(target, ignored) : fs::path(target);
    if (exists && !real.empty())
        file.m_target = real.string();
    file.m_folder = fs::path(file.m_target).parent_path().string();
    if (file.m_folder.empty())
        file.m_folder = ".";

    file.m_descriptor = ::open(file.m_folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
    bool const hasNoUnnamed = errno == EOPNOTSUPP || errno == EISDIR || errno == ENOENT;
    for (int attempt = 0; file.m_descriptor < 0 && hasNoUnnamed && attempt < 100; ++attempt) {
        file.m_temporary = temporaryName(file.m_target, attempt);
        registerTemporary(file.m_temporary);
        file.m_descriptor =
            ::open(file.m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        int const error = errno;
        if (file.m_descriptor < 0) {
            forgetTemporary(file.m_temporary);
            file.m_temporary.clear();
        }
        errno = error;
        if (file.m_descriptor < 0 && error != EEXIST)
            break;
    }
    if (file.m_descriptor < 0)
        file.fail(errno);
    if (exists)
        ::fchmod(file.m_descriptor, status.st_mode & 07777);
    return file;
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : m_target(std::move(other.m_target)), m_folder(std::move(other.m_folder)),
      m_temporary(std::exchange(other.m_temporary, {})), m_pending(std::move(other.m_pending)),
      m_descriptor(std::exchange(other.m_descriptor, -1)), m_isDirect(other.m_isDirect),
      m_ownsDescriptor(std::exchange(other.m_ownsDescriptor, false)),
      m_outlivesReader(other.m_outlivesReader)
{
}

OutputFile::~OutputFile()
{
    if (m_ownsDescriptor && m_descriptor >= 0)
        ::close(m_descriptor);
    if (!m_temporary.empty()) {
        ::unlink(m_temporary.c_str());
        forgetTemporary(m_temporary);
    }
}

void OutputFile::fail(int error) const
{
    throw Fault("cannot write " + m_target + ": " + systemError(error));
}

void OutputFile::write(std::string_view text)
{
    if (m_pending.size() + text.size() <= kPendingSize) {
        m_pending.append(text.data(), text.size());
        return;
    }
    flush();
    writeThrough(text);
}

void OutputFile::flush()
{
    writeThrough(m_pending);
    m_pending.clear();
}

void OutputFile::writeThrough(std::string_view text)
{
    while (!text.empty()) {
        ssize_t const written = ::write(m_descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0 && errno == EPIPE && m_outlivesReader)
            return;
        if (written < 0 && errno == EPIPE)
            throw ClosedPipe();
        if (written < 0)
            fail(errno);
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

void OutputFile::rewrite(std::size_t offset, std::string_view text)
{
    flush();
    while (!text.empty()) {
        ssize_t const written =
            ::pwrite(m_descriptor, text.data(), text.size(), static_cast<off_t>(offset));
        if (written < 0 && errno != EINTR)
            fail(errno);
        std::size_t const done = written < 0 ? 0 : static_cast<std::size_t>(written);
        offset += done;
        text.remove_prefix(done);
    }
}

void OutputFile::commit()
{
    flush();
    if (!m_isDirect)
        rename();
    if (m_ownsDescriptor && ::close(std::exchange(m_descriptor, -1)) != 0)
        fail(errno);
}

// A file without a name gets its own at once, or where a file is to be replaced a temporary one
// first: a link cannot replace what is there.
void OutputFile::rename()
{
    std::string const self = "/proc/self/fd/" + std::to_string(m_descriptor);
    auto const link = [&](std::string const& name) {
        return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    if (m_temporary.empty() && link(m_target))
        return;
    for (int attempt = 0; m_temporary.empty() && attempt < 100; ++attempt) {
        std::string const name = temporaryName(m_target, attempt);
        registerTemporary(name);
        if (link(name)) {
            m_temporary = name;
            break;
        }
        int const error = errno;
        forgetTemporary(name);
        if (error != EEXIST)
            fail(error);
    }
    if (m_temporary.empty() || std::rename(m_temporary.c_str(), m_target.c_str()) != 0)
        fail(m_temporary.empty() ? EEXIST : errno);
    forgetTemporary(m_temporary);
    m_temporary.clear();
}

}  // namespace nodus::host
