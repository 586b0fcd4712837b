// nodus help and nodus version: what --help and --version tell, as people ask for it.
#include "environment.h"
#include "usage.h"

#include "nodus/host/diagnostics.h"

namespace nodus::tools {

Command addHelp(CLI::App& app)
{
    CLI::App* const command =
        app.add_subcommand("help", "Tell how nodus, or one of its commands, is used");
    auto const name = std::make_shared<std::string>();
    command->add_option("COMMAND", *name, "One of the commands. Without it: all of them in short.");
    command->footer("Exit status:\n  0  it is told\n  2  there is no such command");
    return {command, [name, &app] {
                CLI::App* const wanted = name->empty() ? &app : findCommand(app, *name);
                if (wanted == nullptr)
                    throw host::Fault(unknownCommand(app, *name));
                print(helpOf(*wanted));
                return 0;
            }};
}

Command addVersion(CLI::App& app)
{
    CLI::App* const command = app.add_subcommand("version", "Print the version");
    command->footer("Exit status:\n  0  it is printed");
    return {command, [&app] {
                print(app.version() + "\n");
                return 0;
            }};
}

}  // namespace nodus::tools
