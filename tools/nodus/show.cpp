// nodus show: a graph file as a picture, laid out by Graphviz.
#include "environment.h"
#include "filter.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/graph.h"
#include "nodus/host/graph_drawing.h"
#include "nodus/host/input_file.h"
#include "nodus/host/output_file.h"

#include <filesystem>

namespace nodus::tools {

namespace {

struct ShowOptions {
    std::string graph, out = "-";
    std::vector<std::string> settings;
    bool opened = false;
};

std::string layOut(std::string_view text, std::string const& format)
{
    return filtered(text, {{"dot", "-T" + format},
                           "dot of Graphviz",
                           "draw the graph",
                           "install the package graphviz, or write a .dot file with -o"});
}

int show(ShowOptions const& options, Shared const& shared)
{
    Environment const environment(shared);
    host::Diagnostics diagnostics;
    std::string format;
    diagnostics.gather([&] { format = pictureFormat(options.out, {"svg", "png", "pdf", "dot"}); });
    host::GraphSurroundings surroundings{"", nullptr, true, true};
    surroundings.settings = options.settings;
    surroundings.asWritten = !options.opened;
    host::Graph const graph =
        host::readGraph(options.graph, environment.catalogue(), surroundings, diagnostics);
    diagnostics.throwIfAny();

    std::string const text = host::drawGraph(
        graph, std::filesystem::path(host::inputName(options.graph)).stem().string());
    host::writeFile(options.out, format == "dot" ? text : layOut(text, format));
    return 0;
}

}  // namespace

Command addShow(CLI::App& app, Shared const& shared)
{
    CLI::App* const command = app.add_subcommand("show", "Draw a graph as a picture");
    auto const options = std::make_shared<ShowOptions>();
    command->add_option("GRAPH", options->graph, "The graph, a JSON file; - is standard input.")
        ->required();
    command
        ->add_option("-o,--out", options->out,
                     "Where the picture goes: an .svg, .png or .pdf file, or .dot, Graphviz's own\n"
                     "language. It appears whole or not at all.\n"
                     "Without it, or with -: SVG on standard output.")
        ->type_name("FILE");
    addSettings(*command, options->settings);
    command->add_flag(
        "--open", options->opened,
        "Draw all that is evaluated: graphs in the graph by their nodes, parameters by\n"
        "their values, other frames by nodes of their own.");
    command->footer(
        "Boxes are nodes with their ports, types and constants (grey: by default); outlined\n"
        "shapes are the frame, columns, parameters and pixels, filled ones the results. No table\n"
        "is needed.\n"
        "The program dot of Graphviz lays the picture out; only .dot files need none.\n\n"
        "Examples:\n"
        "  nodus show examples/skeleton.json -o skeleton.svg\n"
        "  nodus show examples/drive.json -o drive.png\n\n"
        "Exit status:\n"
        "  0  the picture is written\n"
        "  1  the work failed, for want of memory for instance\n"
        "  2  the graph is wrong, a file cannot be read or written, or dot is missing");
    return {command, [options, &shared] { return show(*options, shared); }};
}

}  // namespace nodus::tools
