// Completion for shells, from the definition of the command line, which also makes --help.
#include "completion.h"

#include "command_line.h"

#include <algorithm>
#include <cctype>

namespace nodus::tools {

namespace {

// What the validators add to the name of an option's value: ":INT in [1 - 1024]".
std::string validatorText(CLI::Option& option)
{
    std::string text;
    try {
        for (int i = 0;; ++i)
            if (std::string const more = option.get_validator(i)->get_description(); !more.empty())
                text += ":" + more;
    } catch (CLI::OptionNotFound const&) {
        return text;  // there are no more
    }
}

// The words of a value that is one of a few; else nothing.
std::vector<std::string> choicesOf(CLI::Option& option)
{
    std::string const text = validatorText(option);
    auto const open = text.find(":{");
    auto const close = text.find('}', open == text.npos ? 0 : open);
    if (open == text.npos || close == text.npos)
        return {};
    return CLI::detail::split(text.substr(open + 2, close - open - 2), ',');
}

enum class Kind { none, choice, nodeType, file, other };

// What can stand for the value, as a shell should offer it.
Kind kindOf(CLI::Option& option)
{
    if (option.nonpositional() && !takesValue(option))
        return Kind::none;
    if (!choicesOf(option).empty())
        return Kind::choice;
    std::string name = option.nonpositional() ? valueName(option) : option.get_name(true);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (name == "TYPE")
        return Kind::nodeType;
    for (char const* const file : {"FILE", "GRAPH", "TABLE", "IMAGE"})
        if (name.find(file) != name.npos)
            return Kind::file;
    return Kind::other;
}

std::string joined(std::vector<std::string> const& words)
{
    std::string line;
    for (std::string const& word : words)
        line += (line.empty() ? "" : " ") + word;
    return line;
}

// A text inside single quotes of a shell, for zsh also inside its [explanation].
std::string quoted(std::string const& text, bool inBrackets = false)
{
    std::string safe;
    for (char const c : text.substr(0, text.find('\n'))) {
        if (c == '\'')
            safe += "'\\''";
        else if (inBrackets && (c == '[' || c == ']' || c == ':' || c == '\\'))
            safe += std::string("\\") + c;
        else
            safe += c;
    }
    return safe;
}

constexpr char const* kNodeTypes = "nodus manual types 2>/dev/null";

std::string zshAction(CLI::Option& option)
{
    switch (kindOf(option)) {
    case Kind::choice:
        return "(" + joined(choicesOf(option)) + ")";
    case Kind::nodeType:
        return "_nodus_types";
    case Kind::file:
        return "_files";
    default:
        return "";
    }
}

std::string zshArguments(CLI::App& command)
{
    std::string lines;
    for (CLI::Option* const option : offeredOptions(command)) {
        auto const spellings = spellingsOf(*option);
        std::string const text = "[" + quoted(option->get_description(), true) + "]";
        std::string const repeat =
            option->get_items_expected_max() > 1 ? "*" : "(" + joined(spellings) + ")";
        for (std::string const& spelling : spellings) {
            lines += " \\\n        '" + repeat + spelling + text;
            if (takesValue(*option))
                lines += ":" + quoted(valueName(*option), true) + ":" + quoted(zshAction(*option));
            lines += "'";
        }
    }
    for (CLI::Option* const argument : optionsOf(command, true))
        lines += std::string(" \\\n        '") +
                 (argument->get_items_expected_max() > 1 ? "*" : "") + ":" +
                 quoted(argument->get_name(true), true) + ":" + quoted(zshAction(*argument)) + "'";
    return lines;
}

}  // namespace

std::string bashCompletion(CLI::App& app)
{
    std::string script =
        "# Completion of nodus for bash; written by: nodus manual bash\n"
        "_nodus()\n{\n"
        "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
        "    local command=${COMP_WORDS[1]} words='' files=''\n"
        "    COMPREPLY=()\n";
    auto const offer = [](CLI::Option& option) -> std::string {
        switch (kindOf(option)) {
        case Kind::choice:
            return "words='" + quoted(joined(choicesOf(option))) + "'";
        case Kind::nodeType:
            return std::string("words=$(") + kNodeTypes + ")";
        case Kind::file:
            return "files=yes";
        default:
            return ":";
        }
    };
    std::string names = joined(spellingsOf(offeredOptions(app)));
    std::string cases;
    for (CLI::App* const command : commandsOf(app)) {
        names += " " + command->get_name();
        cases += "    " + command->get_name() + ")\n        case $before in\n";
        for (CLI::Option* const option : offeredOptions(*command))
            if (takesValue(*option)) {
                std::string pattern;
                for (std::string const& spelling : spellingsOf(*option))
                    pattern += (pattern.empty() ? "" : "|") + spelling;
                cases += "        " + pattern + ") " + offer(*option) + " ;;\n";
            }
        cases += "        *)\n            words='" + joined(spellingsOf(offeredOptions(*command))) +
                 "'\n";
        auto const arguments = optionsOf(*command, true);
        if (!arguments.empty() && offer(*arguments.front()) != ":")
            cases += "            [[ $word == -* ]] || " + offer(*arguments.front()) + "\n";
        cases += "            ;;\n        esac\n        ;;\n";
    }
    script += "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n        command=''\n    fi\n"
              "    case $command in\n    '') words='" +
              names + "' ;;\n" + cases +
              "    esac\n"
              "    # shellcheck disable=SC2207 # words have no blanks\n"
              "    [ -z \"$words\" ] || COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
              "    # shellcheck disable=SC2207\n"
              "    [ -z \"$files\" ] || COMPREPLY=($(compgen -f -- \"$word\"))\n"
              "}\n"
              "complete -o filenames -F _nodus nodus\n";
    return script;
}

std::string zshCompletion(CLI::App& app)
{
    std::string script = "#compdef nodus\n"
                         "# Completion of nodus for zsh; written by: nodus manual zsh\n\n"
                         "_nodus_types()\n{\n"
                         "    local -a types\n    types=(${(f)\"$(" +
                         std::string(kNodeTypes) +
                         ")\"})\n    compadd -a types\n}\n\n"
                         "_nodus()\n{\n"
                         "    local -a commands\n    commands=(\n";
    std::string cases;
    for (CLI::App* const command : commandsOf(app)) {
        script += "        '" + command->get_name() + ":" +
                  quoted(command->get_description(), true) + "'\n";
        cases += "    " + command->get_name() + ")\n        _arguments" + zshArguments(*command) +
                 "\n        ;;\n";
    }
    script += "    )\n    if (( CURRENT == 2 )); then\n"
              "        _describe command commands\n"
              "        _arguments" +
              zshArguments(app) +
              "\n        return\n    fi\n"
              "    local command=${words[2]}\n"
              "    shift words\n    (( CURRENT-- ))\n"
              "    case $command in\n" +
              cases + "    esac\n}\n\n_nodus \"$@\"\n";
    return script;
}

}  // namespace nodus::tools
