// Completion for zsh, from the definition of the command line, which also makes --help.
#include "completion.h"

#include "command_line.h"
#include "completion_words.h"
#include "filled.h"

#include <fmt/format.h>

#include <algorithm>

namespace nodus::tools {

namespace {

// The first sentence of a description, without its full stop.
std::string firstSentence(std::string text)
{
    std::ranges::replace(text, '\n', ' ');
    text.resize(std::min(text.size(), text.find(". ")));
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

// A text inside single quotes of zsh; inside its [explanation], too, or as one of its names.
std::string quoted(std::string const& text, bool isSpecified = true)
{
    std::string safe;
    for (char const c : text) {
        if (c == '\'')
            safe += "'\\''";
        else if (isSpecified && (c == '[' || c == ']' || c == ':' || c == '\\'))
            safe += std::string("\\") + c;
        else
            safe += c;
    }
    return safe;
}

std::string zshAction(CLI::Option const& option)
{
    switch (kindOf(option)) {
    case ValueKind::file:
        return "_files";
    case ValueKind::nodeType:
        return "_nodus_types";
    case ValueKind::port:
        return "->ports";
    case ValueKind::command:
        return "_nodus_commands";
    default:
        return "";
    }
}

std::string zshArguments(std::vector<CLI::Option*> const& options,
                         std::vector<CLI::Option*> const& arguments)
{
    std::string lines;
    for (CLI::Option* const option : options) {
        auto const spellings = spellingsOf(*option);
        std::string const text = "[" + quoted(firstSentence(option->get_description())) + "]";
        std::string const repeat = takesMany(*option) ? "*" : "(" + joined(spellings) + ")";
        for (std::string const& spelling : spellings) {
            lines += fmt::format(" \\\n        '{}{}", repeat, spelling);
            // The value is the next word, or behind a sign in the same one.
            if (takesValue(*option))
                lines += spelling.starts_with("--") ? "=" : "+";
            lines += text;
            if (takesValue(*option))
                lines += ":" + quoted(valueName(*option)) + ":" + zshAction(*option);
            lines += "'";
        }
    }
    for (CLI::Option* const argument : arguments)
        lines += std::string(" \\\n        '") + (takesMany(*argument) ? "*" : "") + ":" +
                 quoted(valueName(*argument)) + ":" + zshAction(*argument) + "'";
    return lines;
}

}  // namespace

std::string zshCompletion(CLI::App& app)
{
    std::string const script = R"zsh(#compdef nodus
# Completion of nodus for zsh; written by: nodus manual zsh

_nodus_tells() # what the modules on the line have
{
    told=(${(f)"$(nodus $modules manual $@ 2>/dev/null)"})
}

_nodus_types()
{
    local -a told
    _nodus_tells types
    compadd -a told
}

_nodus_ports() # of the node type, but for those that have their value
{
    local -a told
    _nodus_tells ports $1
    told=(${told:|used})
    compadd -S '' -a told
}

_nodus_commands()
{
    local -a commands
    commands=(
@COMMANDS@    )
    _describe command commands
}

_nodus()
{
    local curcontext=$curcontext state line
    local -a modules used
    local -i i
    typeset -A opt_args
    for (( i = 2; i < CURRENT; ++i )); do
        [[ $words[i-1] != --module ]] || modules+=(--module $words[i])
        [[ $words[i] != --module=* ]] || modules+=(--module ${words[i]#*=})
        [[ $words[i] != *=* ]] || used+=(${words[i]%%=*}=)
    done
    _arguments -C@OPTIONS@ \
        '(-)1:command:_nodus_commands' \
        '(-)*::argument:->argument' && return
    [[ $state == argument ]] || return
    case $words[1] in
@CASES@    esac
    [[ $state != ports ]] || _nodus_ports $line[1]
}

_nodus "$@"
)zsh";
    std::string commands, cases;
    for (CLI::App* const command : commandsOf(app)) {
        commands += "        '" + quoted(command->get_name()) + ":" +
                    quoted(command->get_description(), false) + "'\n";
        cases += "    " + command->get_name() + ")\n        _arguments" +
                 zshArguments(offeredOptions(*command), optionsOf(*command, true)) +
                 "\n        ;;\n";
    }
    return filled(script, {{"@COMMANDS@", commands},
                           {"@OPTIONS@", zshArguments(optionsOf(app, false), {})},
                           {"@CASES@", cases}});
}

}  // namespace nodus::tools
