// What the completions for all shells are made of.
#include "completion_words.h"

#include "command_line.h"

namespace nodus::tools {

ValueKind kindOf(CLI::Option const& option)
{
    std::string const name = valueName(option);
    if (name == "TYPE")
        return ValueKind::nodeType;
    if (name == "PORT=VALUE")
        return ValueKind::port;
    if (name == "COMMAND")
        return ValueKind::command;
    for (char const* const file : {"FILE", "GRAPH", "MODULE", "TABLE", "TABLE.csv"})
        if (name == file)
            return ValueKind::file;
    return ValueKind::other;
}

std::string joined(std::vector<std::string> const& words, char const* between)
{
    std::string line;
    for (std::string const& word : words)
        line += (line.empty() ? "" : between) + word;
    return line;
}

std::vector<std::string> namesOf(std::vector<CLI::App*> const& commands)
{
    std::vector<std::string> names;
    names.reserve(commands.size());
    for (CLI::App* const command : commands)
        names.push_back(command->get_name());
    return names;
}

}  // namespace nodus::tools
