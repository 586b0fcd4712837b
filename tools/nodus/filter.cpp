// Programs as filters, by files in memory: whole streams, without pipes that wait for each other.
#include "filter.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"
#include "nodus/host/output_file.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <spawn.h>

namespace nodus::tools {

namespace {

class Stream {
public:
    Stream(std::string_view text, std::string const& program)
        : m_program(program), m_file(::memfd_create("nodus-filter", MFD_CLOEXEC))
    {
        if (m_file < 0)
            throw host::Fault("cannot run " + m_program + ": " + host::systemError(errno));
        auto file = host::OutputFile::onDescriptor(m_file, "the text for " + m_program);
        file.write(text);
        file.commit();
        ::lseek(m_file, 0, SEEK_SET);
    }
    ~Stream() { ::close(m_file); }
    Stream(Stream const&) = delete;
    Stream& operator=(Stream const&) = delete;

    int descriptor() const { return m_file; }

    std::string text() const
    {
        std::string all;
        std::array<char, 65536> buffer;
        while (true) {
            ssize_t const got =
                ::pread(m_file, buffer.data(), buffer.size(), static_cast<off_t>(all.size()));
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                throw host::Fault("cannot read what " + m_program +
                                  " wrote: " + host::systemError(errno));
            if (got == 0)
                return all;
            all.append(buffer.data(), static_cast<std::size_t>(got));
        }
    }

private:
    std::string const& m_program;
    int m_file;
};

}  // namespace

std::string filtered(std::string_view text, Filter const& filter)
{
    Stream const input(text, filter.name), output({}, filter.name), complaints({}, filter.name);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input.descriptor(), STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output.descriptor(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, complaints.descriptor(), STDERR_FILENO);
    // Signals that this process ignores have their usual meaning there.
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    sigset_t usual;
    ::sigemptyset(&usual);
    ::sigaddset(&usual, SIGPIPE);
    ::sigaddset(&usual, SIGXFSZ);
    ::posix_spawnattr_setsigdefault(&attributes, &usual);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    std::vector<std::string> words = filter.command;
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t child = 0;
    int const error =
        ::posix_spawnp(&child, arguments[0], &actions, &attributes, arguments.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw host::Fault("cannot run " + filter.name + " (" + host::systemError(error) +
                          "): " + filter.remedy);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return output.text();
    std::string const told = complaints.text();
    throw host::Fault(filter.name + " could not " + filter.task + ": " +
                      (WIFSIGNALED(status) ? std::string(::strsignal(WTERMSIG(status)))
                       : told.empty()      ? "exit status " + std::to_string(WEXITSTATUS(status))
                                           : told.substr(0, told.find('\n'))));
}

}  // namespace nodus::tools
