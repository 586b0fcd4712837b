// Completion for shells, from the definition of the command line, which also makes --help.
#include "completion.h"

#include "command_line.h"

#include <algorithm>

namespace nodus::tools {

namespace {

using Words = std::vector<std::string>;

// What can stand for a value, as a shell should offer it.
enum class Kind { other, file, nodeType, port, command };

Kind kindOf(CLI::Option const& option)
{
    std::string const name = valueName(option);
    if (name == "TYPE")
        return Kind::nodeType;
    if (name == "PORT=VALUE")
        return Kind::port;
    if (name == "COMMAND")
        return Kind::command;
    for (char const* const file : {"FILE", "GRAPH", "MODULE", "TABLE", "TABLE.csv"})
        if (name == file)
            return Kind::file;
    return Kind::other;
}

std::string joined(Words const& words, char const* between = " ")
{
    std::string line;
    for (std::string const& word : words)
        line += (line.empty() ? "" : between) + word;
    return line;
}

Words namesOf(std::vector<CLI::App*> const& commands)
{
    Words names;
    for (CLI::App* const command : commands)
        names.push_back(command->get_name());
    return names;
}

// The first sentence of a description, without its full stop.
std::string firstSentence(std::string text)
{
    std::ranges::replace(text, '\n', ' ');
    text.resize(std::min(text.size(), text.find(". ")));
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

// The options that take a value, of nodus and all commands, by how their values are offered: an
// option means the same wherever it is.
Words optionsWithValue(CLI::App& app, bool areFiles)
{
    Words all;
    auto commands = commandsOf(app);
    commands.push_back(&app);
    for (CLI::App* const command : commands)
        for (CLI::Option* const option : optionsOf(*command, false))
            for (std::string const& spelling : spellingsOf(*option))
                if (takesValue(*option) && (kindOf(*option) == Kind::file) == areFiles &&
                    std::ranges::find(all, spelling) == all.end())
                    all.push_back(spelling);
    return all;
}

std::string bashOffer(CLI::App& app, CLI::Option const& argument)
{
    switch (kindOf(argument)) {
    case Kind::file:
        return "files=yes";
    case Kind::nodeType:
        return "words=$(_nodus_tells types)";
    case Kind::port:
        return "words=$(_nodus_tells ports \"$first\") ports=yes";
    case Kind::command:
        return "words='" + joined(namesOf(commandsOf(app))) + "'";
    default:
        return ":";
    }
}

// Puts texts into the places that a script has for them.
std::string filled(std::string script,
                   std::vector<std::pair<std::string, std::string>> const& texts)
{
    for (auto const& [place, text] : texts)
        script.replace(script.find(place), place.size(), text);
    return script;
}

// What a command's options are, and what stands for each of its arguments.
std::string bashCase(CLI::App& app, CLI::App& command)
{
    std::string text = "        " + command.get_name() + ")\n            options='" +
                       joined(spellingsOf(offeredOptions(command))) + "'\n";
    auto const arguments = optionsOf(command, true);
    std::string offers;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        offers += "            " + (takesMany(*arguments[i]) ? "*" : std::to_string(i)) + ") " +
                  bashOffer(app, *arguments[i]) + " ;;\n";
    if (!offers.empty())
        text += "            case $given in\n" + offers + "            esac\n";
    return text + "            ;;\n";
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
    case Kind::file:
        return "_files";
    case Kind::nodeType:
        return "_nodus_types";
    case Kind::port:
        return "->ports";
    case Kind::command:
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
            lines += " \\\n        '" + repeat + spelling;
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

std::string bashCompletion(CLI::App& app)
{
    Words const files = optionsWithValue(app, true), others = optionsWithValue(app, false);
    std::string const script = R"bash(# Completion of nodus for bash; written by: nodus manual bash
_nodus_tells() # what the modules on the line have
{
    nodus "${modules[@]}" manual "$@" 2>/dev/null
}
_nodus()
{
    local word=${COMP_WORDS[COMP_CWORD]} before='' command='' first='' used=' ' given=0
    local options='' words='' files='' ports='' each i
    local -a modules=()
    COMPREPLY=()
    # What stands in front of the word. Bash parts a=1 and --data=t.csv at the sign.
    for ((i = 1; i < COMP_CWORD; ++i)); do
        each=${COMP_WORDS[i]}
        if [[ $each == '=' ]]; then
            [[ -n $before ]] || used+="${COMP_WORDS[i - 1]} " before='='
        elif [[ -n $before ]]; then
            [[ $before != --module ]] || modules+=(--module "$each")
            before=''
        elif [[ $each == -* ]]; then
            case $each in
            @VALUES@) before=$each ;;
            esac
        elif [[ -z $command ]]; then
            command=$each
        else
            [[ $each != *=* ]] || used+="${each%%=*} "
            ((given++ > 0)) || first=$each
        fi
    done
    if [[ $word == '=' ]]; then
        [[ -n $before ]] || before='='
        word=''
    fi

    case $before in
    @FILES@) files=yes ;;
    '')
        case $command in
        '') options='@OPTIONS@' words='@COMMANDS@' ;;
@CASES@        esac
        ;;
    esac
    if [[ $word == -* || -z $words$files ]]; then
        words=$options files='' ports=''
    fi
    if [[ -n $ports ]]; then
        compopt -o nospace 2>/dev/null
        options=$words words=''
        for each in $options; do
            [[ $used == *" ${each%=} "* ]] || words+=" $each"
        done
    fi
    if [[ -n $files ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    fi
}
complete -F _nodus nodus
)bash";
    std::string cases;
    for (CLI::App* const command : commandsOf(app))
        cases += bashCase(app, *command);
    Words values = files;
    values.insert(values.end(), others.begin(), others.end());
    return filled(script, {{"@VALUES@", joined(values, " | ")},
                           {"@FILES@", joined(files, " | ")},
                           {"@OPTIONS@", joined(spellingsOf(optionsOf(app, false)))},
                           {"@COMMANDS@", joined(namesOf(commandsOf(app)))},
                           {"@CASES@", cases}});
}

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
