// nodus manual, a hidden command: the definition of the command line, which also makes --help,
// written for man, bash and zsh.
#include "environment.h"

#include <algorithm>
#include <cctype>

namespace nodus::tools {

namespace {

// What is not in a group is hidden, from here as from --help.
std::vector<CLI::App*> commandsOf(CLI::App& app)
{
    return app.get_subcommands([](CLI::App* command) {
        return !command->get_group().empty() && !command->get_name().empty();
    });
}

// The command's options, those of its option groups included; positional arguments or the others.
std::vector<CLI::Option*> optionsOf(CLI::App& app, bool positional)
{
    std::vector<CLI::Option*> options = app.get_options([=](CLI::Option* option) {
        return !option->get_group().empty() && option->nonpositional() != positional;
    });
    for (CLI::App* const group :
         app.get_subcommands([](CLI::App* part) { return part->get_name().empty(); }))
        for (CLI::Option* const option : optionsOf(*group, positional))
            options.push_back(option);
    return options;
}

std::vector<std::string> spellingsOf(CLI::Option& option)
{
    std::vector<std::string> spellings;
    for (std::string const& name : option.get_snames())
        spellings.push_back("-" + name);
    for (std::string const& name : option.get_lnames())
        spellings.push_back("--" + name);
    return spellings;
}

bool takesValue(CLI::Option& option) { return option.get_items_expected_max() > 0; }

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

std::string valueName(CLI::Option& option)
{
    std::string const name = option.get_type_name();
    return name.substr(0, name.size() - validatorText(option).size());
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

// Text for the man macros: no line is taken for a request, no hyphen for a dash.
std::string roff(std::string const& text)
{
    std::string safe;
    bool lineStart = true;
    for (char const c : text) {
        if (lineStart && (c == '.' || c == '\''))
            safe += "\\&";
        lineStart = c == '\n';
        if (c == '\\')
            safe += "\\e";
        else if (c == '-')
            safe += "\\-";
        else
            safe += c;
    }
    return safe;
}

std::string synopsis(CLI::App& command, std::string const& path)
{
    std::string line = ".B " + roff(path) + "\n";
    if (!optionsOf(command, false).empty())
        line += ".RI [ options ]\n";
    for (CLI::Option* const argument : optionsOf(command, true)) {
        std::string const many = argument->get_items_expected_max() > 1 ? " ..." : "";
        std::string const name = roff(argument->get_name(true)) + many;
        line += argument->get_required() ? ".I " + name + "\n" : ".RI [ \"" + name + "\" ]\n";
    }
    return line;
}

void describe(std::string& page, CLI::App& command)
{
    for (bool const positional : {true, false})
        for (CLI::Option* const option : optionsOf(command, positional)) {
            page += ".TP\n";
            if (positional) {
                page += ".I " + roff(option->get_name(true)) + "\n";
            } else {
                std::string line;
                for (std::string const& spelling : spellingsOf(*option))
                    line += (line.empty() ? "" : ", ") + ("\\fB" + roff(spelling) + "\\fR");
                if (takesValue(*option))
                    line += " \\fI" + roff(valueName(*option)) + "\\fR";
                page += line + "\n";
            }
            page += roff(option->get_description()) + "\n";
        }
}

std::string joined(std::vector<std::string> const& words)
{
    std::string line;
    for (std::string const& word : words)
        line += (line.empty() ? "" : " ") + word;
    return line;
}

// What can be written behind a command: its own options, and those that it passes on to nodus.
std::vector<CLI::Option*> offeredOptions(CLI::App& command)
{
    std::vector<CLI::Option*> options = optionsOf(command, false);
    if (command.get_parent() != nullptr && command.get_fallthrough())
        for (CLI::Option* const option : optionsOf(*command.get_parent(), false))
            if (takesValue(*option))
                options.push_back(option);
    return options;
}

std::vector<std::string> allSpellings(CLI::App& command)
{
    std::vector<std::string> all;
    for (CLI::Option* const option : offeredOptions(command))
        for (std::string const& spelling : spellingsOf(*option))
            all.push_back(spelling);
    return all;
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

std::string manualPage(CLI::App& app)
{
    std::string const name = app.get_name();
    std::string page = ".\\\" Written by the command itself: nodus manual man\n";
    page += ".TH NODUS 1 " NODUS_RELEASE_DAY " \"nodusmath " NODUS_VERSION "\" \"User Commands\"\n";
    page += ".SH NAME\nnodus \\- " + roff(app.get_description()) + "\n.SH SYNOPSIS\n";
    auto const commands = commandsOf(app);
    for (std::size_t i = 0; i < commands.size(); ++i)
        page +=
            (i == 0 ? "" : ".br\n") + synopsis(*commands[i], name + " " + commands[i]->get_name());
    page += R"(.SH DESCRIPTION
.B nodus
lists, describes and calls the node kernels of a module, evaluates graph files over frames, on one
machine or on many, and draws them.
Node types are kernel names with or without what they have in common:
.B Add_Float3
and
.B NodusAdd_Float3_Solve
mean the same.
.SH OPTIONS
)";
    describe(page, app);
    page += ".SH COMMANDS\n";
    for (CLI::App* const command : commands) {
        page += ".SS nodus " + roff(command->get_name()) + "\n" + roff(command->get_description()) +
                "\n";
        describe(page, *command);
        if (std::string const footer = command->get_footer(); !footer.empty())
            page += ".PP\n.nf\n" + roff(footer) + "\n.fi\n";
    }
    page += R"(.SH EXIT STATUS
.TP
.B 0
The work is done.
.TP
.B 1
The work failed; or
.B nodus check
found a fault in a module.
.TP
.B 2
The command line, a graph, a table or a module is wrong; one line on standard error for each fault.
.PP
When whoever reads standard output has enough and closes the pipe, as
.B head
does, the command ends at once and without a word, of the signal
.BR SIGPIPE ,
which a shell shows as status 141; files that it was writing are not left behind.
The same holds for standard error, but not where the results go to a file: these are completed without the log.
.SH EXAMPLES
.nf
nodus list
nodus describe Slerp_Quat
nodus call Add_Float3 a=1,2,3 b=10,20,30
nodus eval turntable.json \-\-frames 0:4
nodus show turntable.json \-o turntable.svg
.fi
)";
    return page;
}

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
    std::string names = joined(allSpellings(app));
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
        cases += "        *)\n            words='" + joined(allSpellings(*command)) + "'\n";
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

std::string nodeTypes(Shared const& shared)
{
    Environment const environment(shared);
    std::string lines;
    for (host::Family const& family : environment.catalogue().families()) {
        lines += family.name + "\n";
        for (host::NodeType const* const type : family.nodeTypes)
            if (type->name != family.name)
                lines += type->name + "\n";
    }
    return lines;
}

}  // namespace

Command addManual(CLI::App& app, Shared const& shared)
{
    CLI::App* const command = app.add_subcommand("manual", "Write the manual or a completion");
    command->group("");
    auto const what = std::make_shared<std::string>();
    command->add_option("WHAT", *what, "man, bash, zsh or types")
        ->required()
        ->check(CLI::IsMember({"man", "bash", "zsh", "types"}));
    return {command, [what, &app, &shared] {
                print(*what == "man"    ? manualPage(app)
                      : *what == "bash" ? bashCompletion(app)
                      : *what == "zsh"  ? zshCompletion(app)
                                        : nodeTypes(shared));
                return 0;
            }};
}

}  // namespace nodus::tools
