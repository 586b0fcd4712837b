// The manual page: the definition of the command line, which also makes --help, written for man.
#include "manual_page.h"

#include "command_line.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

namespace nodus::tools {

namespace {

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

// A phrase as a sentence, on one line.
std::string sentence(std::string text)
{
    std::ranges::replace(text, '\n', ' ');
    return roff(text) + (text.ends_with('.') ? "\n" : ".\n");
}

std::string synopsis(CLI::App& command, std::string const& path)
{
    std::string line = ".B " + roff(path) + "\n";
    if (command.get_parent() != nullptr)
        line += ".RI [ option ]...\\&\n";
    for (CLI::Option* const argument : optionsOf(command, true)) {
        std::string const many = takesMany(*argument) ? "...\\&" : "";
        std::string const name = roff(valueName(*argument));
        line += argument->get_required() ? fmt::format(".IR {} {}\n", name, many)
                                         : fmt::format(".RI [ {} ]{}\n", name, many);
    }
    return line;
}

std::string describeOptions(CLI::App& command)
{
    std::string page;
    for (bool const positional : {true, false})
        for (CLI::Option* const option : optionsOf(command, positional)) {
            // What every command has stands in front of them all.
            if (option == command.get_help_ptr() && command.get_parent() != nullptr)
                continue;
            std::string line;
            for (std::string const& spelling : spellingsOf(*option))
                line += (line.empty() ? "" : ", ") + ("\\fB" + roff(spelling) + "\\fR");
            if (positional || takesValue(*option))
                line += (positional ? "\\fI" : " \\fI") + roff(valueName(*option)) + "\\fR";
            page += ".TP\n" + line + "\n" + sentence(option->get_description());
        }
    return page;
}

// The footer's paragraphs: what is indented stays as it is, all else flows.
std::string describeFooter(std::string const& footer)
{
    std::string page;
    bool isParagraph = true, isVerbatim = false;
    std::istringstream lines(footer);
    for (std::string line; std::getline(lines, line);) {
        bool const isIndented = line.starts_with(' ');
        if (isVerbatim && !isIndented)
            page += ".fi\n.RE\n";
        if (isIndented && !isVerbatim)
            page += ".RS 4\n.nf\n";
        isVerbatim = isIndented;
        if (line.empty()) {
            isParagraph = true;
            continue;
        }
        page += (isParagraph && !isIndented ? ".PP\n" : "") +
                roff(isIndented ? line.substr(2) : line) + "\n";
        isParagraph = false;
    }
    return page + (isVerbatim ? ".fi\n.RE\n" : "");
}

}  // namespace

std::string manualPage(CLI::App& app)
{
    std::string const name = app.get_name();
    std::string page = ".\\\" Written by the command itself: nodus manual man\n";
    page += ".TH NODUS 1 " NODUS_RELEASE_DAY " \"nodusmath " NODUS_VERSION
            "\" \"User Commands\"\n.nh\n";
    page += ".SH NAME\nnodus \\- evaluates graphs of math nodes over frames\n.SH SYNOPSIS\n";
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
.PP
A graph is a JSON file of nodes by their names, each with a
.B type
and its
.BR inputs :
constants, outputs of other nodes, the frame, columns of a table or pixels; and of the
.B outputs
to write down.
.SH OPTIONS
These may stand in front of a command or behind it.
)";
    page += describeOptions(app) + ".SH COMMANDS\n";
    for (CLI::App* const command : commands)
        page += ".SS nodus " + roff(command->get_name()) + "\n" +
                sentence(command->get_description()) + describeOptions(*command) +
                describeFooter(command->get_footer());
    page += R"(.SH EXIT STATUS
What a command's status means stands with the command. In general:
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
The command line, a graph, a table or a module is wrong, or a file cannot be read or written; one
line on standard error for each fault, with the file and its line where it has one.
.PP
When whoever reads standard output has enough and closes the pipe, as
.B head
does, the command ends at once and without a word, of the signal
.BR SIGPIPE ,
which a shell shows as status 141; files that it was writing are not left behind.
The same holds for standard error, but not where the results go to a file: these are completed
without the log.
.SH FILES
.TP
.I share/nodus/examples
Sample graphs and their tables, installed beside
.I bin/nodus
in the same folder: the
.I examples
below.
.SH EXAMPLES
.nf
nodus list rotate vector
nodus describe Slerp_Quat
nodus call Add_Float3 a=1,2,3 b=10,20,30
nodus eval examples/flipbook.json \-\-frames 0:4
nodus eval examples/drive.json \-\-data examples/drive.csv | head \-1
nodus show examples/drive.json >drive.svg
.fi
.SH SEE ALSO
.BR dot (1)
)";
    return page;
}

}  // namespace nodus::tools
