// The built command, run as a user runs it.
#pragma once

#include "support/process.h"
#include "support/temporary_folder.h"

#include <string>
#include <vector>

namespace command {

using support::Finished;
using support::ProcessOptions;
using support::TemporaryFolder;

inline Finished nodus(std::vector<std::string> arguments, ProcessOptions const& options = {})
{
    arguments.insert(arguments.begin(), NODUS_TEST_COMMAND);
    return support::runProcess(arguments, options);
}

}  // namespace command
