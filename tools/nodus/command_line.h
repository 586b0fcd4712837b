// The definition of the command line, looked at: for help, the manual, completions and faults.
#pragma once

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <charconv>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace nodus::tools {

// The commands that --help tells of.
std::vector<CLI::App*> commandsOf(CLI::App& app);

// The command of that name, hidden ones too, or null.
CLI::App* findCommand(CLI::App& app, std::string const& name);

// The command's options, or its positional arguments.
std::vector<CLI::Option*> optionsOf(CLI::App& command, bool positional);
// Its options, and those that it passes on to nodus.
std::vector<CLI::Option*> offeredOptions(CLI::App& command);

// "-o", "--out"; of one option, or of all of these.
std::vector<std::string> spellingsOf(CLI::Option const& option);
std::vector<std::string> spellingsOf(std::vector<CLI::Option*> const& options);
bool takesValue(CLI::Option const& option);
// As many values as one likes.
bool takesMany(CLI::Option const& option);
// What the value is called: "FILE", "A:B[:STEP]"; the name of a positional argument.
std::string valueName(CLI::Option const& option);

// How --help looks.
std::shared_ptr<CLI::Formatter> helpFormatter();
// What --help tells of nodus, or of one of its commands.
std::string helpOf(CLI::App const& app);

// Takes a number from least to most.
template <typename Number> CLI::Validator numberFrom(Number least, Number most)
{
    return {[=](std::string const& text) -> std::string {
                Number number{};
                auto const [end, error] =
                    std::from_chars(text.data(), text.data() + text.size(), number);
                if (error == std::errc{} && end == text.data() + text.size() && number >= least &&
                    number <= most)
                    return {};
                return fmt::format("wants a {}number from {} to {}, not '{}'",
                                   std::is_integral_v<Number> ? "whole " : "", least, most, text);
            },
            ""};
}

}  // namespace nodus::tools
