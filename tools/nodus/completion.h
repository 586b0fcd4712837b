// Completion for shells.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace nodus::tools {

// A script for bash, the file _nodus for zsh.
std::string bashCompletion(CLI::App& app);
std::string zshCompletion(CLI::App& app);

}  // namespace nodus::tools
