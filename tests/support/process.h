// Running a program as a user does: arguments in, streams and exit status out.
#pragma once

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>
#include <vector>

namespace support {

struct Finished {
    int exitStatus = -1;  // -1 when a signal ended it
    int signal = 0;       // that signal
    std::string out, error;
    long peakKilobytes = 0;  // of memory
};

struct ProcessOptions {
    int standardOutput = -1;               // a descriptor to use instead of collecting it
    std::function<void()> beforeExec{};    // in the child: limits, closed streams
    std::function<void(pid_t)> onStart{};  // in the parent, once the child is there
};

inline Finished runProcess(std::vector<std::string> const& arguments,
                           ProcessOptions const& options = {})
{
    // Files in memory take any amount of text, and nobody has to read it in time.
    int const out = ::memfd_create("out", MFD_CLOEXEC);
    int const error = ::memfd_create("error", MFD_CLOEXEC);
    std::vector<char*> pointers;
    for (std::string const& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    pid_t const child = ::fork();
    if (child == 0) {
        ::dup2(options.standardOutput >= 0 ? options.standardOutput : out, STDOUT_FILENO);
        ::dup2(error, STDERR_FILENO);
        if (options.beforeExec)
            options.beforeExec();
        ::execv(pointers[0], pointers.data());
        ::_exit(127);
    }
    if (options.onStart)
        options.onStart(child);
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    auto const textOf = [](int file) {
        std::string text(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
        EXPECT_EQ(::pread(file, text.data(), text.size(), 0), std::ssize(text));
        ::close(file);
        return text;
    };
    return {.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            .signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0,
            .out = textOf(out),
            .error = textOf(error),
            .peakKilobytes = usage.ru_maxrss};
}

}  // namespace support
