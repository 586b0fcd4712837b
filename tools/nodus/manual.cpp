// nodus manual, a hidden command: the manual page and the completions, made from the definition of
// the command line, which also makes --help; the words that completions ask for; and the schema of
// graph files.
#include "command_line.h"
#include "completion.h"
#include "environment.h"
#include "manual_page.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/graph_schema.h"

namespace nodus::tools {

namespace {

// What completions offer: node types and families.
std::string nodeTypes(host::Catalogue const& catalogue)
{
    std::string lines;
    for (host::Family const& family : catalogue.families()) {
        lines += family.name + "\n";
        for (host::NodeType const* const type : family.nodeTypes)
            if (type->name != family.name)
                lines += type->name + "\n";
    }
    return lines;
}

// The inputs of a node type as nodus call takes them, "angle="; none of what is no node type.
std::string portsOf(host::Catalogue const& catalogue, std::string const& type)
{
    std::string lines;
    if (host::NodeType const* const found = catalogue.find(type))
        for (host::Port const& port : found->inputs)
            lines += port.name + "=\n";
    return lines;
}

}  // namespace

Command addManual(CLI::App& app, Shared const& shared)
{
    CLI::App* const command = app.add_subcommand("manual", "Write the manual or a completion");
    command->group("")->footer("");
    auto const what = std::make_shared<std::string>(), type = std::make_shared<std::string>();
    command->add_option("WHAT", *what, "man, bash, zsh, types, ports or schema")->required();
    command->add_option("TYPE", *type, "The node type whose ports are meant");
    return {command, [what, type, &app, &shared] {
                if (*what == "man" || *what == "bash" || *what == "zsh") {
                    print(*what == "man"    ? manualPage(app)
                          : *what == "bash" ? bashCompletion(app)
                                            : zshCompletion(app));
                    return 0;
                }
                if (*what != "types" && *what != "ports" && *what != "schema")
                    throw host::Fault("manual wants man, bash, zsh, types, ports or schema, not " +
                                      host::inQuotes(*what));
                Environment const environment(shared);
                print(*what == "types"    ? nodeTypes(environment.catalogue())
                      : *what == "schema" ? host::graphSchema(environment.catalogue())
                                          : portsOf(environment.catalogue(), *type));
                return 0;
            }};
}

}  // namespace nodus::tools
