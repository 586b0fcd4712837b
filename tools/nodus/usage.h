// What is wrong with a command line, in words.
#pragma once

#include "command_line.h"

#include <string>
#include <vector>

namespace nodus::tools {

// A line for each fault of the command line that the app could not parse.
std::vector<std::string> usageFaults(CLI::App& app, CLI::ParseError const& error);

std::string unknownCommand(CLI::App& app, std::string const& name);

}  // namespace nodus::tools
