// The definition of the command line, looked at.
#include "command_line.h"

namespace nodus::tools {

namespace {

// For people: no types, nothing of what the library knows about an option besides its description.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter()
    {
        label("Positionals", "Arguments");
        label("SUBCOMMAND", "COMMAND");
        label("OPTIONS", "OPTION...");
    }

private:
    std::string make_option_name(CLI::Option const* option, bool isPositional) const override
    {
        if (isPositional)
            return option->get_name(true);
        std::string names;
        for (std::string const& spelling : spellingsOf(*option))
            names += (names.empty() ? "" : ", ") + spelling;
        return names;
    }

    std::string make_option_opts(CLI::Option const* option) const override
    {
        return (!option->get_positional() && takesValue(*option) ? " " + valueName(*option) : "") +
               (takesMany(*option) ? "..." : "");
    }
};

}  // namespace

// What is in no group is hidden, from here as from --help.
std::vector<CLI::App*> commandsOf(CLI::App& app)
{
    return app.get_subcommands([](CLI::App* command) { return !command->get_group().empty(); });
}

CLI::App* findCommand(CLI::App& app, std::string const& name)
{
    auto const found =
        app.get_subcommands([&](CLI::App* command) { return command->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

std::vector<CLI::Option*> optionsOf(CLI::App& command, bool positional)
{
    return command.get_options(
        [=](CLI::Option* option) { return option->nonpositional() != positional; });
}

std::vector<CLI::Option*> offeredOptions(CLI::App& command)
{
    std::vector<CLI::Option*> options = optionsOf(command, false);
    if (command.get_parent() != nullptr && command.get_fallthrough())
        for (CLI::Option* const option : optionsOf(*command.get_parent(), false))
            if (takesValue(*option))
                options.push_back(option);
    return options;
}

std::vector<std::string> spellingsOf(CLI::Option const& option)
{
    std::vector<std::string> spellings;
    for (std::string const& name : option.get_snames())
        spellings.push_back("-" + name);
    for (std::string const& name : option.get_lnames())
        spellings.push_back("--" + name);
    return spellings;
}

std::vector<std::string> spellingsOf(std::vector<CLI::Option*> const& options)
{
    std::vector<std::string> all;
    for (CLI::Option* const option : options)
        for (std::string const& spelling : spellingsOf(*option))
            all.push_back(spelling);
    return all;
}

bool takesValue(CLI::Option const& option) { return option.get_items_expected_max() > 0; }

bool takesMany(CLI::Option const& option) { return option.get_items_expected_max() > 1; }

std::string valueName(CLI::Option const& option)
{
    return option.nonpositional() ? option.get_type_name() : option.get_name(true);
}

std::shared_ptr<CLI::Formatter> helpFormatter() { return std::make_shared<HelpFormatter>(); }

std::string helpOf(CLI::App const& app)
{
    std::string const before =
        app.get_parent() != nullptr ? app.get_parent()->get_name() + " " : std::string();
    return app.get_formatter()->make_help(&app, before + app.get_name(),
                                          CLI::AppFormatMode::Normal);
}

}  // namespace nodus::tools
