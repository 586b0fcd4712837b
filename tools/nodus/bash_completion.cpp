// Completion for bash, from the definition of the command line, which also makes --help.
#include "completion.h"

#include "command_line.h"
#include "completion_words.h"
#include "filled.h"

#include <algorithm>

namespace nodus::tools {

namespace {

using Words = std::vector<std::string>;

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
                if (takesValue(*option) && (kindOf(*option) == ValueKind::file) == areFiles &&
                    std::ranges::find(all, spelling) == all.end())
                    all.push_back(spelling);
    return all;
}

std::string bashOffer(CLI::App& app, CLI::Option const& argument)
{
    switch (kindOf(argument)) {
    case ValueKind::file:
        return "files=yes";
    case ValueKind::nodeType:
        return "words=$(_nodus_tells types)";
    case ValueKind::port:
        return "words=$(_nodus_tells ports \"$first\") ports=yes";
    case ValueKind::command:
        return "words='" + joined(namesOf(commandsOf(app))) + "'";
    default:
        return ":";
    }
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

}  // namespace nodus::tools
