// What the completions for all shells are made of.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace nodus::tools {

// What can stand for a value, as a shell should offer it.
enum class ValueKind { other, file, nodeType, port, command };

ValueKind kindOf(CLI::Option const& option);

std::string joined(std::vector<std::string> const& words, char const* between = " ");
std::vector<std::string> namesOf(std::vector<CLI::App*> const& commands);

}  // namespace nodus::tools
