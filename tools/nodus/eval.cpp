// nodus eval: a graph over frames.
#include "command_line.h"
#include "environment.h"
#include "progress.h"
#include "watch.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/graph.h"
#include "nodus/host/image.h"
#include "nodus/host/input_file.h"
#include "nodus/host/run.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <thread>

namespace nodus::tools {

namespace {

struct EvalOptions {
    std::string graph, frames, shard, data, out = "-", log;
    std::string image, size, map;
    std::vector<std::string> settings;
    std::optional<unsigned> noiseSeed;
    int threads = 0, depth = 8;
    bool oneByOne = false, summary = false, watch = false;
};

std::size_t threadsOf(EvalOptions const& options)
{
    return options.threads > 0 ? static_cast<std::size_t>(options.threads)
                               : std::max(1u, std::thread::hardware_concurrency());
}

// A path with the number of a frame in it: "frame_%04d.png", "%d.pfm".
struct FramePath {
    std::string before, after;
    int digits = 0;

    std::string of(std::int32_t frame) const
    {
        return fmt::format("{}{:0{}}{}", before, frame, digits, after);
    }
};

std::optional<FramePath> framePathOf(std::string const& path)
{
    constexpr int kMostDigits = 20;
    auto const percent = path.find('%');
    if (percent == path.npos)
        return std::nullopt;
    FramePath found{path.substr(0, percent), {}, 0};
    std::size_t const at = path.find_first_not_of("0123456789", percent + 1);
    if (at == path.npos || path[at] != 'd')
        return std::nullopt;
    if (at > percent + 1)
        std::from_chars(path.data() + percent + 1, path.data() + at, found.digits);
    if (found.digits > kMostDigits)
        return std::nullopt;
    found.after = path.substr(at + 1);
    return found;
}

// The options of pictures that want no graph.
struct ImageWishes {
    host::ImageOptions image;
    std::optional<FramePath> path;
    host::FrameRange frames;
};

ImageWishes imageWishesOf(EvalOptions const& options, host::Diagnostics& diagnostics)
{
    ImageWishes wishes{{{512, 512}, {}, 0, threadsOf(options)}, framePathOf(options.image), {}};
    host::ImageOptions& image = wishes.image;
    image.depth = static_cast<std::size_t>(options.depth);
    diagnostics.gather([&] {
        if (options.watch && host::isStandardStream(options.image))
            throw host::Fault("--watch wants a file for the picture: name one with --image");
        if (pictureFormat(options.image, {"png", "pfm"}) != "pfm")
            return;
        image.format = host::ImageFormat::pfm;
        if (!options.map.empty() || options.depth != 8)
            throw host::Fault("a .pfm picture has the values as they are: --map and --depth are "
                              "for .png");
    });
    diagnostics.gather([&] {
        if (!options.size.empty())
            image.size = host::parseImageSize(options.size);
    });
    diagnostics.gather([&] {
        if (!options.map.empty())
            image.map = host::parseValueRange(options.map);
    });
    diagnostics.gather([&] {
        if (options.frames.empty())
            return;
        wishes.frames = host::parseFrames(options.frames);
        if (wishes.frames.count() != 1 && !wishes.path)
            throw host::Fault("--image wants one frame, not " + options.frames +
                              ", or a name for each: frame_%04d.png");
    });
    return wishes;
}

// files: gets those that the graph has as nodes.
void evaluateImage(EvalOptions const& options, Shared const& shared,
                   std::vector<std::string>& files)
{
    Environment const environment(shared);
    host::Diagnostics diagnostics;
    auto [image, path, frames] = imageWishesOf(options, diagnostics);
    host::GraphSurroundings surroundings{"", nullptr, true};
    surroundings.settings = options.settings;
    surroundings.filesRead = &files;
    host::Graph const graph =
        host::readGraph(options.graph, environment.catalogue(), surroundings, diagnostics);
    diagnostics.throwIfAny();
    host::requirePicture(graph, host::inputName(options.graph));

    host::Plan const plan = options.oneByOne ? host::compile(graph) : host::compileRows(graph);
    for (std::uint64_t i = 0; i < frames.count(); ++i) {
        image.frame = frames.at(i);
        auto file = host::OutputFile::open(path ? path->of(image.frame) : options.image);
        host::renderImage(plan, image, file);
        file.commit();
    }
}

// On standard error, behind the log.
void tell(host::Summary const& summary, EvalOptions const& options, host::Graph graph)
{
    if (options.summary) {
        auto messages = host::OutputFile::onDescriptor(STDERR_FILENO, "standard error");
        messages.outliveReader();
        messages.write(summary.text());
        messages.commit();
    }
    if (std::string const note = host::noteOfNan(summary, std::move(graph), options.data);
        !note.empty())
        tellOnStandardError(note);
}

// The options of results that want neither graph nor table.
struct Wishes {
    std::optional<host::FrameRange> frames;
    std::optional<host::Shard> shard;
    host::ResultFormat format{};
};

Wishes wishesOf(EvalOptions const& options, host::Diagnostics& diagnostics)
{
    Wishes wishes;
    diagnostics.gather([&] {
        if (!options.frames.empty())
            wishes.frames = host::parseFrames(options.frames);
    });
    diagnostics.gather([&] {
        if (!options.shard.empty())
            wishes.shard = host::parseShard(options.shard);
    });
    diagnostics.gather([&] { wishes.format = host::resultFormatOf(options.out); });
    if (!options.log.empty() && isSameFile(options.out, options.log))
        diagnostics.add("--out and --log want two files, not both " +
                        (host::isStandardStream(options.out) ? "standard output" : options.out));
    return wishes;
}

void evaluateFrames(EvalOptions const& options, Shared const& shared,
                    std::vector<std::string>& files)
{
    Environment const environment(shared);
    host::Diagnostics diagnostics;
    auto const [frames, shard, format] = wishesOf(options, diagnostics);
    host::RunOptions run;
    run.frames = frames;
    run.format = format;
    std::unique_ptr<host::TableReader> table;
    if (host::isStandardStream(options.graph) && host::isStandardStream(options.data))
        throw host::Fault("GRAPH and --data cannot both be standard input: name a file for one");
    host::GraphSurroundings surroundings{options.data.empty() ? "" : host::inputName(options.data),
                                         nullptr, false};
    surroundings.settings = options.settings;
    surroundings.filesRead = &files;
    diagnostics.gather([&] {
        if (options.data.empty())
            return;
        table = std::make_unique<host::TableReader>(options.data);
        surroundings.columns = &table->columns();
        run.table = table.get();
    });
    host::Graph graph =
        host::readGraph(options.graph, environment.catalogue(), surroundings, diagnostics);
    for (std::string const& file : files)
        if (!options.log.empty() && !host::isStandardStream(options.log) &&
            isSameFile(options.log, file))
            diagnostics.add("--log would replace " + file + ", which is read: name another file");
    diagnostics.throwIfAny();

    if (shard)
        run.frames = host::sliceOf(run.frames ? *run.frames
                                   : table    ? host::framesOfTable(options.data)
                                              : host::FrameRange{},
                                   *shard);
    // A frame or two are not worth the preparations.
    bool const isFew = run.frames ? run.frames->count() <= 2 : !table;
    host::Plan const plan =
        options.oneByOne || isFew ? host::compile(graph) : host::compileRows(graph);
    host::Summary summary(plan, options.summary ? host::Summary::Extent::all
                                                : host::Summary::Extent::nan);

    auto results = host::OutputFile::open(options.out);
    auto log = options.log.empty() ? host::OutputFile::onDescriptor(STDERR_FILENO, "standard error")
                                   : host::OutputFile::open(options.log);
    // A file of results is worth having without the log; results that nobody keeps are not.
    if (!host::isStandardStream(options.out))
        log.outliveReader();
    run.results = &results;
    run.summary = &summary;
    run.log = &log;
    run.threads = threadsOf(options);
    std::uint64_t const total = run.frames ? run.frames->count() : table ? 0 : 1;
    Progress progress(total, [&] { return table ? table->fractionRead() : 0.0; });
    run.progress = [&](std::uint64_t done) { progress.show(done); };
    if (options.log.empty() || host::isStandardStream(options.log))
        run.beforeLog = [&] { progress.wipe(); };
    host::run(plan, run);
    progress.wipe();
    log.flush();
    results.commit();
    log.commit();
    tell(summary, options, std::move(graph));
}

int evaluate(EvalOptions const& options, Shared const& shared)
{
    auto const work = [&](std::vector<std::string>& files) {
        // The field of the noise nodes is drawn from it, once for each time the module is loaded;
        // the C library's own seed is 1.
        std::srand(options.noiseSeed.value_or(1));
        if (options.image.empty())
            evaluateFrames(options, shared, files);
        else
            evaluateImage(options, shared, files);
    };
    std::vector<std::string> files{options.graph};
    if (!options.data.empty())
        files.push_back(options.data);
    if (options.watch) {
        host::Diagnostics diagnostics;
        if (options.image.empty())
            wishesOf(options, diagnostics);
        else
            imageWishesOf(options, diagnostics);
        diagnostics.throwIfAny();
        watch(files, {options.out, options.log}, work);
    }
    work(files);
    return 0;
}

}  // namespace

Command addEval(CLI::App& app, Shared const& shared)
{
    CLI::App* const command = app.add_subcommand("eval", "Evaluate a graph over frames");
    auto const options = std::make_shared<EvalOptions>();
    command->add_option("GRAPH", options->graph, "The graph, a JSON file; - is standard input.")
        ->required();
    command
        ->add_option(
            "--frames", options->frames,
            "The frames from A to B, both included, or every STEP-th of them; A alone is one\n"
            "frame. Without it: a frame for each row of the table, or frame 0.")
        ->type_name("A:B[:STEP]");
    addSettings(*command, options->settings);
    command
        ->add_option("--noise-seed", options->noiseSeed,
                     "What the field of the noise nodes is drawn from. Without it: 1.")
        ->type_name("N")
        ->check(numberFrom(0u, std::numeric_limits<unsigned>::max()));
    CLI::Option* const shard =
        command
            ->add_option(
                "--shard", options->shard,
                "Evaluate only slice I of N equal slices of the frames, counted from 1: a share\n"
                "for each of N machines. nodus merge joins their results.")
            ->type_name("I/N");
    CLI::Option* const data =
        command
            ->add_option(
                "--data", options->data,
                "The table with the graph's columns: a .csv file, a structured array of NumPy\n"
                "(.npy), an archive of arrays (.npz) or motion capture (.bvh). Frame N reads\n"
                "row N, counted from 0.\n"
                "- is CSV on standard input.")
            ->type_name("TABLE");
    CLI::Option* const out =
        command
            ->add_option("--out", options->out,
                         "Where the results go: a .csv file, a .jsonl file with an object for each "
                         "frame, or\n"
                         "an .npy or .npz file for NumPy. It appears whole or not at all.\n"
                         "Without it, or with -: CSV on standard output.")
            ->type_name("FILE");
    CLI::Option* const log =
        command
            ->add_option(
                "--log", options->log,
                "Where the log lines go; - is standard output. Without it: standard error.")
            ->type_name("FILE");
    command
        ->add_option("--threads", options->threads,
                     "How many threads evaluate, up to 1024; no result depends on it.\n"
                     "Without it: as many as there are cores.")
        ->type_name("N")
        ->check(numberFrom(1, 1024));
    command->add_flag(
        "--one-by-one", options->oneByOne,
        "Call the module's kernels one by one instead of its companion's, which take\n"
        "many frames at once. No result depends on it; it is slower.");
    command->add_flag(
        "--summary", options->summary,
        "Tell on standard error, for each lane of the results, how many there are, their\n"
        "minimum, maximum and mean, and how many are NaN or infinite.");
    command->add_flag(
        "--watch", options->watch,
        "Evaluate again whenever the graph, a graph in it or the table changes, until Ctrl-C.\n"
        "Faults are told and do not end it.");
    CLI::Option* const image =
        command
            ->add_option(
                "--image", options->image,
                "Evaluate the graph once for each pixel, and write its one output, a Float, a\n"
                "Color or a Float4, as a picture. A .png file; or .pfm, with the values as they\n"
                "are (of four lanes the first three). It may have pixels as sources, but no\n"
                "columns. %04d in the name is the frame, of which there may then be many.\n"
                "- is a PNG on standard output.")
            ->type_name("FILE")
            ->excludes(data)
            ->excludes(out)
            ->excludes(log)
            ->excludes(shard);
    command
        ->add_option("--size", options->size,
                     "The picture's width and height, each up to 8192. Without it: 512x512.")
        ->type_name("WxH")
        ->needs(image);
    command
        ->add_option("--map", options->map,
                     "The values that become black and white. Without it: 0:1.")
        ->type_name("MIN:MAX")
        ->needs(image);
    command
        ->add_option("--depth", options->depth,
                     "The bits of each channel of a .png picture, 8 or 16. Without it: 8.")
        ->type_name("BITS")
        ->check(CLI::IsMember({8, 16}).description(""))
        ->needs(image);
    command->footer(
        "The faults of the options and of the graph are told all at once, before anything is\n"
        "evaluated; of those of the table's rows, the first twenty. Then no file is written.\n\n"
        "Examples:\n"
        "  nodus eval examples/flipbook.json --frames 0:60:5\n"
        "  nodus eval examples/drive.json --data examples/drive.csv --out drive.jsonl\n"
        "  nodus eval examples/noise.json --frames 0:999 --shard 2/4 --out 2.csv\n"
        "  nodus eval examples/clouds.json --image clouds.png --size 1024x1024\n"
        "  nodus eval examples/clouds.json --image clouds.pfm\n"
        "  nodus eval examples/clouds.json --image cloud_%04d.png --frames 0:47\n\n"
        "Exit status:\n"
        "  0  results, log or picture are written\n"
        "  1  the work failed, for want of memory for instance\n"
        "  2  an option, the graph or the table is wrong, or a file cannot be read or written");
    return {command, [options, &shared] { return evaluate(*options, shared); }};
}

}  // namespace nodus::tools
