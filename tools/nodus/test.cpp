// nodus test: the kernels of a module by rows, and its catalogue held against its functions.
#include "environment.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/kernel_rows.h"

#include <fmt/format.h>

#include <cstdlib>

namespace nodus::tools {

namespace {

constexpr int kFaultsFound = 1;

struct TestOptions {
    std::vector<std::string> files;
    std::string described;
};

int test(TestOptions const& options, Shared const& shared)
{
    Environment const environment(modulePaths(shared));
    host::Catalogue const& catalogue = environment.catalogue();
    std::srand(1);  // kernels that draw from rand, once, have the same draws in every run
    host::RowsReport report;
    for (std::string const& file : options.files)
        host::tryRows(catalogue, file, report);
    for (host::NodeType const& type : catalogue.nodeTypes())
        if (!report.tried.contains(type.name))
            report.faults.push_back(type.name + ": has no row");
    if (!options.described.empty())
        for (std::string& fault : host::portFaults(catalogue, options.described))
            report.faults.push_back(std::move(fault));
    std::string text;
    for (std::string const& fault : report.faults)
        text += host::printable(fault) + "\n";
    print(text + fmt::format("{} node types, {} rows, {} calls: {}\n", catalogue.nodeTypes().size(),
                             report.rows, report.calls,
                             report.faults.empty()
                                 ? "no fault"
                                 : fmt::format("{} fault{}", report.faults.size(),
                                               report.faults.size() == 1 ? "" : "s")));
    return report.faults.empty() ? 0 : kFaultsFound;
}

}  // namespace

Command addTest(CLI::App& app, Shared const& shared)
{
    CLI::App* const command =
        app.add_subcommand("test", "Try the kernels of a module on rows of values");
    auto const options = std::make_shared<TestOptions>();
    command
        ->add_option("ROWS", options->files,
                     "Files of rows, KERNELS INPUTS = OUTPUTS : WHY, as in\n"
                     "  Add_{Float,Double}  1, 2; -0, 0 = 3; 0 : signs of zero\n"
                     "Results are compared bit by bit; every node type needs a row.")
        ->required();
    command
        ->add_option("--ports", options->described,
                     "The module compiled so that its entry points tell their ports: they have to\n"
                     "be those of the catalogue.")
        ->type_name("FILE");
    command->footer("The modules are those of --module, or that of this installation.\n\n"
                    "Example:\n"
                    "  nodus --module build/libown.so test test/own.txt\n\n"
                    "Exit status:\n"
                    "  0  every row has the bits that it wants\n"
                    "  1  one has not, or a node type has no row; each is told\n"
                    "  2  a file cannot be read, or it is no module that can be loaded");
    return {command, [options, &shared] { return test(*options, shared); }};
}

}  // namespace nodus::tools
