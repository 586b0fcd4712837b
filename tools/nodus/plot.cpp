// nodus plot: what a graph gives, drawn over frames.
#include "environment.h"
#include "filter.h"
#include "watch.h"

#include "nodus/host/graph.h"
#include "nodus/host/input_file.h"
#include "nodus/host/plot.h"
#include "nodus/host/run.h"

#include <memory>
#include <optional>
#include <thread>

namespace nodus::tools {

namespace {

struct PlotOptions {
    std::string graph, data, frames, out = "-";
    std::vector<std::string> settings;
    bool watch = false;
};

// Of the port that the output is of, or a piece of it.
std::string unitOf(host::Graph const& graph, host::GraphOutput const& output)
{
    for (host::Port const& port : graph.nodes[output.node].type->outputs)
        if (output.offset >= port.offset && output.offset < port.offset + port.type->size)
            return port.unit;
    return {};
}

// The options that want neither graph nor table.
struct Wishes {
    std::string format;
    std::optional<host::FrameRange> frames;
};

Wishes wishesOf(PlotOptions const& options, host::Diagnostics& diagnostics)
{
    Wishes wishes;
    diagnostics.gather([&] {
        wishes.format = pictureFormat(options.out, {"svg", "png"});
        if (options.watch && host::isStandardStream(options.out))
            throw host::Fault("--watch wants a file for the picture: name one with -o");
    });
    diagnostics.gather([&] {
        if (!options.frames.empty())
            wishes.frames = host::parseFrames(options.frames);
    });
    return wishes;
}

// In two pixels for each unit of the drawing, as screens are dense today.
std::string png(std::string const& svg)
{
    return filtered(svg, {{"rsvg-convert", "--zoom=2"},
                          "rsvg-convert",
                          "draw the plot (an .svg file wants no program)",
                          "install the package librsvg2-bin, or write an .svg file with -o"});
}

void plot(PlotOptions const& options, Shared const& shared, std::vector<std::string>& files)
{
    Environment const environment(shared);
    host::Diagnostics diagnostics;
    Wishes const wishes = wishesOf(options, diagnostics);
    if (host::isStandardStream(options.graph) && host::isStandardStream(options.data))
        throw host::Fault("GRAPH and --data cannot both be standard input: name a file for one");
    host::GraphSurroundings surroundings;
    surroundings.settings = options.settings;
    surroundings.filesRead = &files;
    std::unique_ptr<host::TableReader> table;
    host::RunOptions run;
    run.frames = wishes.frames;
    diagnostics.gather([&] {
        if (options.data.empty())
            return;
        surroundings.tablePath = host::inputName(options.data);
        table = std::make_unique<host::TableReader>(options.data);
        surroundings.columns = &table->columns();
        run.table = table.get();
    });
    host::Graph graph =
        host::readGraph(options.graph, environment.catalogue(), surroundings, diagnostics);
    diagnostics.throwIfAny();
    host::Plan const plan = host::compileRows(graph);
    host::Summary summary(plan, host::Summary::Extent::values);
    if (summary.lanes().empty()) {
        host::FileFaults faults(host::inputName(options.graph));
        faults.add(graph.outputsLine, "a plot wants outputs that are numbers");
        faults.throwIfAny();
    }
    auto nowhere = host::OutputFile::open("/dev/null");
    run.results = &nowhere;
    run.summary = &summary;
    run.threads = std::max(1u, std::thread::hardware_concurrency());
    host::run(plan, run);

    std::vector<host::PlotCurve> curves;
    for (host::Summary::Lane const& lane : summary.lanes())
        curves.push_back({lane.name, unitOf(graph, graph.outputs[lane.output]), lane.values});
    std::string const svg = host::drawPlot(
        graph.description.empty() ? host::inputName(options.graph) : graph.description,
        summary.framesKept(), curves);
    auto out = host::OutputFile::open(options.out);
    out.write(wishes.format == "png" ? png(svg) : svg);
    out.commit();
    if (std::string const note = host::noteOfNan(summary, std::move(graph), options.data);
        !note.empty())
        tellOnStandardError(note);
}

}  // namespace

Command addPlot(CLI::App& app, Shared const& shared)
{
    CLI::App* const command = app.add_subcommand("plot", "Draw what a graph gives over frames");
    auto const options = std::make_shared<PlotOptions>();
    command->add_option("GRAPH", options->graph, "The graph, a JSON file; - is standard input.")
        ->required();
    command
        ->add_option("--frames", options->frames,
                     "The frames from A to B, both included, or every STEP-th of them. Without it: "
                     "a\nframe for each row of the table, or frame 0.")
        ->type_name("A:B[:STEP]");
    command
        ->add_option(
            "--data", options->data,
            "The table with the graph's columns, .csv, .npy or .bvh; - is CSV on standard\n"
            "input.")
        ->type_name("TABLE");
    addSettings(*command, options->settings);
    command
        ->add_option(
            "-o,--out", options->out,
            "Where the picture goes: an .svg file, or .png by the program rsvg-convert of "
            "librsvg.\n"
            "It appears whole or not at all. Without it, or with -: SVG on standard output.")
        ->type_name("FILE");
    command->add_flag(
        "--watch", options->watch,
        "Draw again whenever the graph, a graph in it or the table changes, until Ctrl-C.");
    command->footer(
        "Each lane of the outputs is a curve. Curves of one unit and of like ranges share axes, up "
        "to\nfive; a curve is broken where it is NaN or infinite, and NaN is told of\non standard "
        "error. Log lines are not written.\n\n"
        "Examples:\n"
        "  nodus plot examples/drive.json --data examples/drive.csv -o drive.svg\n"
        "  nodus plot examples/noise.json --frames 0:99 -o noise.png\n\n"
        "Exit status:\n"
        "  0  the picture is written\n"
        "  1  the work failed, for want of memory for instance\n"
        "  2  an option, the graph or the table is wrong, or a file cannot be read or written");
    return {command, [options, &shared] {
                auto const work = [&](std::vector<std::string>& files) {
                    plot(*options, shared, files);
                };
                std::vector<std::string> files{options->graph};
                if (!options->data.empty())
                    files.push_back(options->data);
                if (options->watch) {
                    host::Diagnostics diagnostics;
                    wishesOf(*options, diagnostics);
                    diagnostics.throwIfAny();
                    watch(files, {options->out}, work);
                }
                work(files);
                return 0;
            }};
}

}  // namespace nodus::tools
