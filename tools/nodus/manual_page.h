// The manual page of the command.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace nodus::tools {

std::string manualPage(CLI::App& app);

}  // namespace nodus::tools
