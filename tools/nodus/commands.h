// The sub-commands. Each adds itself to the command line and does its work when it was asked for.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace nodus::tools {

// Options that every sub-command shares.
struct Shared {
    std::vector<std::string> modules;  // empty: the module beside the command
};

// What to do when the sub-command is the one that was given; returns the exit status.
using Action = std::function<int()>;

// The footer of the app is what --help and the manual say behind the options: paragraphs with a
// blank line between them; what is indented, examples and the exit status, stays as it is.
struct Command {
    CLI::App* app;
    Action run;
};

Command addCall(CLI::App& app, Shared const& shared);
Command addCheck(CLI::App& app, Shared const& shared);
Command addDescribe(CLI::App& app, Shared const& shared);
Command addDigest(CLI::App& app, Shared const& shared);
Command addEval(CLI::App& app, Shared const& shared);
Command addHelp(CLI::App& app);
Command addList(CLI::App& app, Shared const& shared);
Command addManual(CLI::App& app, Shared const& shared);
Command addMerge(CLI::App& app);
Command addNewGraph(CLI::App& app);
Command addNewModule(CLI::App& app);
Command addPlot(CLI::App& app, Shared const& shared);
Command addShow(CLI::App& app, Shared const& shared);
Command addTest(CLI::App& app, Shared const& shared);
Command addVersion(CLI::App& app);

}  // namespace nodus::tools
