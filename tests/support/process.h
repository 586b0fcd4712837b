// Running a program as a user does: arguments in, streams and exit status out.
#pragma once

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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
    std::function<void(pid_t)> onError{};  // in the parent, when the first error text has come
};

inline Finished runProcess(std::vector<std::string> const& arguments,
                           ProcessOptions const& options = {})
{
    int out[2], error[2];
    if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(error, O_CLOEXEC) != 0)
        ADD_FAILURE() << "no pipes";
    std::vector<char*> pointers;
    for (std::string const& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    pid_t const child = ::fork();
    if (child == 0) {
        ::dup2(options.standardOutput >= 0 ? options.standardOutput : out[1], STDOUT_FILENO);
        ::dup2(error[1], STDERR_FILENO);
        if (options.beforeExec)
            options.beforeExec();
        ::execv(pointers[0], pointers.data());
        ::_exit(127);
    }
    ::close(out[1]);
    ::close(error[1]);
    if (options.onStart)
        options.onStart(child);

    Finished finished;
    bool isTold = false;
    int open = 2;
    while (open > 0) {
        fd_set set;
        FD_ZERO(&set);
        for (int const end : {out[0], error[0]})
            if (end >= 0)
                FD_SET(end, &set);
        ::select(std::max(out[0], error[0]) + 1, &set, nullptr, nullptr, nullptr);
        for (auto [end, text] : {std::pair(&out[0], &finished.out), {&error[0], &finished.error}}) {
            if (*end < 0 || !FD_ISSET(*end, &set))
                continue;
            char buffer[65536];
            ssize_t const got = ::read(*end, buffer, sizeof buffer);
            if (got > 0) {
                text->append(buffer, static_cast<std::size_t>(got));
            } else {
                ::close(*end);
                *end = -1;
                --open;
            }
        }
        if (!isTold && options.onError && !finished.error.empty()) {
            isTold = true;
            options.onError(child);
        }
    }
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    finished.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    finished.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    finished.peakKilobytes = usage.ru_maxrss;
    return finished;
}

}  // namespace support
