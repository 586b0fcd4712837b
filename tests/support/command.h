// Runs a shell command and returns what it printed.
#pragma once

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace nodus::test {

struct Finished {
    int exitStatus;
    std::string out;
};

inline Finished run(std::string const& command)
{
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    std::string out;
    for (int c; pipe != nullptr && (c = std::getc(pipe)) != EOF;)
        out += static_cast<char>(c);
    int const status = pipe != nullptr ? ::pclose(pipe) : -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

// The lines of the command's standard output; a command that fails is a failure of the test.
inline std::vector<std::string> linesOf(std::string const& command)
{
    Finished const finished = run(command);
    EXPECT_EQ(finished.exitStatus, 0) << command;
    std::vector<std::string> lines;
    std::istringstream stream(finished.out);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace nodus::test
