// nodus new-graph: the first graph of a recording.
#include "environment.h"

#include "nodus/host/bvh.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/output_file.h"

#include <filesystem>

namespace nodus::tools {

namespace {

struct NewGraphOptions {
    std::string from, out = "-";
};

int writeGraph(NewGraphOptions const& options)
{
    std::filesystem::path const path(options.from);
    if (path.extension() != ".bvh")
        throw host::Fault("--from wants motion capture, a .bvh file, not " +
                          host::inQuotes(options.from));
    host::LineReader lines(options.from, host::LineEnds::everywhere);
    host::writeFile(options.out,
                    host::graphOfSkeleton(host::readBvhSkeleton(lines), path.filename().string()));
    return 0;
}

}  // namespace

Command addNewGraph(CLI::App& app)
{
    CLI::App* const command = app.add_subcommand("new-graph", "Write a graph for a recording");
    auto const options = std::make_shared<NewGraphOptions>();
    command
        ->add_option(
            "--from", options->from,
            "Motion capture, a .bvh file. Its skeleton becomes a graph that places each joint\n"
            "in the world; the offsets of the joints are parameters.")
        ->type_name("FILE")
        ->required();
    command
        ->add_option("-o,--out", options->out,
                     "Where the graph goes. It appears whole or not at all.\n"
                     "Without it, or with -: on standard output.")
        ->type_name("FILE");
    command->footer("Example:\n"
                    "  nodus new-graph --from examples/wave.bvh -o wave.json\n"
                    "  nodus eval wave.json --data examples/wave.bvh\n\n"
                    "Exit status:\n"
                    "  0  the graph is written\n"
                    "  2  the recording is wrong, or a file cannot be read or written");
    return {command, [options] { return writeGraph(*options); }};
}

}  // namespace nodus::tools
