// Runs a shell command and returns what it printed.
#pragma once

#include "support/process.h"

#include <sstream>

namespace nodus::test {

// The lines of the command's standard output; a command that fails is a failure of the test.
inline std::vector<std::string> linesOf(std::string const& command)
{
    support::Finished const run = support::runProcess({"/bin/sh", "-c", command});
    EXPECT_EQ(run.exitStatus, 0) << command << ": " << run.error;
    std::vector<std::string> lines;
    std::istringstream stream(run.out);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace nodus::test
