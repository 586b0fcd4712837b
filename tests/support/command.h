// Runs a shell command and returns what it printed.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace nodus::test {

// The lines of the command's standard output; a command that fails is a failure of the test.
inline std::vector<std::string> linesOf(std::string const& command)
{
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        ADD_FAILURE() << "cannot run " << command;
        return {};
    }
    std::string output;
    char buffer[4096];
    while (std::size_t const count = std::fread(buffer, 1, sizeof buffer, pipe))
        output.append(buffer, count);
    EXPECT_EQ(pclose(pipe), 0) << command;

    std::vector<std::string> lines;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace nodus::test
