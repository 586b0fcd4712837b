// What is wrong with a command line: unknown words with the nearest known one, and what is missing.
#include "usage.h"

#include "nodus/host/diagnostics.h"

#include <algorithm>

namespace nodus::tools {

namespace {

using Lines = std::vector<std::string>;

bool isOption(std::string const& word) { return word.size() > 1 && word.starts_with('-'); }

// "--out" of "--out=x".
std::string withoutValue(std::string const& word) { return word.substr(0, word.find('=')); }

std::string allOf(Lines const& names)
{
    return host::alternatives({names.begin(), names.end()}, "or", names.size());
}

// The beginning of a name stands for it when it is that of one only; else what is spelt like it;
// else all of them are named.
std::string nearest(std::string const& wrong, Lines const& known)
{
    auto const begins = [&](std::string const& name) {
        return wrong.size() > 2 && name.starts_with(wrong);
    };
    if (std::ranges::count_if(known, begins) == 1)
        return "; did you mean '" + *std::ranges::find_if(known, begins) + "'?";
    std::string const near = host::didYouMean(wrong, known);
    return near.empty() ? "; known: " + allOf(known) : near;
}

// An option in front of every command, which none of nodus itself is.
std::string misplacedOption(CLI::App& app, std::string const& word)
{
    Lines having, all = spellingsOf(optionsOf(app, false));
    for (CLI::App* const command : commandsOf(app)) {
        Lines const known = spellingsOf(optionsOf(*command, false));
        if (std::ranges::find(known, word) != known.end())
            having.push_back(app.get_name() + " " + command->get_name());
        all.insert(all.end(), known.begin(), known.end());
    }
    if (!having.empty())
        return host::inQuotes(word) + " wants a command in front of it; it belongs to " +
               allOf(having);
    std::string const near = host::didYouMean(word, all);
    return "unknown option " + host::inQuotes(word) + near;
}

// Words that nobody takes, where no command was given.
Lines faultsWithoutCommand(CLI::App& app, Lines const& words)
{
    if (!words.empty() && isOption(words.front()))
        return {misplacedOption(app, withoutValue(words.front()))};
    if (!words.empty())
        return {unknownCommand(app, words.front())};
    Lines names;
    for (CLI::App* const command : commandsOf(app))
        names.push_back(command->get_name());
    return {"wants a command: " + allOf(names)};
}

// The same behind a command.
Lines unknownWords(CLI::App& command, Lines const& words)
{
    Lines lines;
    for (std::string const& word : words)
        if (isOption(word))
            lines.push_back(command.get_name() + " has no option " +
                            host::inQuotes(withoutValue(word)) +
                            nearest(withoutValue(word), spellingsOf(offeredOptions(command))));
    // Behind an unknown option the others may be its value.
    if (lines.empty() && !words.empty())
        lines.push_back(command.get_name() +
                        " wants no further argument: " + host::inQuotes(words.front()));
    return lines;
}

Lines missingArguments(CLI::App& command)
{
    Lines lines;
    for (CLI::Option* const option : command.get_options())
        if (option->get_required() && option->count() == 0)
            lines.push_back(command.get_name() + " wants " +
                            (option->get_positional() ? "" : spellingsOf(*option).back() + " ") +
                            valueName(*option));
    return lines;
}

// Options that exclude each other, or that one of them lacks.
Lines unfitOptions(CLI::App& command)
{
    Lines lines;
    for (CLI::Option* const option : command.get_options()) {
        if (option->count() == 0)
            continue;
        for (CLI::Option* const other : option->get_needs())
            if (other->count() == 0)
                lines.push_back(option->get_name() + " goes with " + other->get_name() + " only");
        // Each of the two excludes the other; the later one tells.
        auto const all = command.get_options();
        for (CLI::Option* const other : option->get_excludes())
            if (other->count() != 0 &&
                std::ranges::find(all, other) < std::ranges::find(all, option))
                lines.push_back(option->get_name() + " does not go with " + other->get_name());
    }
    return lines;
}

// "--frames: 1 required A:B[:STEP] missing", "--frames: At Most 1 required but received 2".
std::string wrongCount(CLI::App& app, CLI::App& command, std::string const& what)
{
    std::string const name = what.substr(0, what.find(':'));
    CLI::Option const* option = command.get_option_no_throw(name);
    if (option == nullptr)
        option = app.get_option_no_throw(name);
    if (option == nullptr)
        return what;
    return option->count() > 1 ? name + " is given " + std::to_string(option->count()) +
                                     " times; it may be given once"
                               : name + " wants a value: " + valueName(*option);
}

Lines faultsOf(CLI::App& app, CLI::App& command, CLI::ParseError const& error)
{
    if (Lines lines = unknownWords(command, app.remaining(true)); !lines.empty())
        return lines;
    if (dynamic_cast<CLI::ArgumentMismatch const*>(&error) != nullptr)
        return {wrongCount(app, command, error.what())};
    if (dynamic_cast<CLI::RequiredError const*>(&error) != nullptr)
        if (Lines lines = missingArguments(command); !lines.empty())
            return lines;
    if (Lines lines = unfitOptions(command); !lines.empty())
        return lines;
    // "--threads: wants a whole number ..."
    std::string what = error.what();
    if (auto const wants = what.find(": wants "); wants != what.npos)
        what.erase(wants, 1);
    return {what};
}

}  // namespace

std::string unknownCommand(CLI::App& app, std::string const& name)
{
    Lines known;
    for (CLI::App* const command : commandsOf(app))
        known.push_back(command->get_name());
    return "unknown command " + host::inQuotes(name) + nearest(name, known);
}

std::vector<std::string> usageFaults(CLI::App& app, CLI::ParseError const& error)
{
    auto const given = app.get_subcommands();
    Lines lines = given.empty() ? faultsWithoutCommand(app, app.remaining(true))
                                : faultsOf(app, *given.front(), error);
    lines.back() += " (" + app.get_name() + (given.empty() ? "" : " " + given.front()->get_name()) +
                    " --help tells more)";
    return lines;
}

}  // namespace nodus::tools
