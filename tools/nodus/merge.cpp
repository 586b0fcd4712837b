// nodus merge: what several machines evaluated becomes what one would have written.
#include "environment.h"
#include "progress.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"
#include "nodus/host/merge.h"
#include "nodus/host/table.h"

#include <fmt/format.h>

namespace nodus::tools {

namespace {

struct MergeOptions {
    std::vector<std::string> parts;
    std::string out = "-", frames, data;
};

std::optional<host::FrameRange> framesOf(MergeOptions const& options, host::PartFormat format)
{
    if (!options.frames.empty())
        return host::parseFrames(options.frames);
    if (!options.data.empty())
        return host::framesOfTable(options.data);
    if (format == host::PartFormat::log)
        return std::nullopt;
    throw host::Fault("merge wants to know which frames the results have in all: give --frames or "
                      "--data as to nodus eval");
}

int merge(MergeOptions const& options)
{
    host::MergeOptions merge;
    merge.parts = options.parts;
    // Standard output takes what the parts are.
    std::string const& model =
        host::isStandardStream(options.out) ? options.parts.front() : options.out;
    merge.format = host::partFormatOf(model);
    host::Diagnostics diagnostics;
    for (std::string const& part : options.parts) {
        if (host::partFormatOf(part) != merge.format)
            diagnostics.add(fmt::format("{}: is not of the kind that {} is", part, model));
        if (isSameFile(part, options.out))
            diagnostics.add("--out " + options.out + " is one of the files to merge");
    }
    diagnostics.throwIfAny();
    merge.frames = framesOf(options, merge.format);

    auto file = host::OutputFile::open(options.out);
    Progress progress(merge.frames ? merge.frames->count() : 0, [] { return 0.0; });
    merge.progress = [&](std::uint64_t done) { progress.show(done); };
    host::merge(merge, file);
    progress.wipe();
    file.commit();
    return 0;
}

}  // namespace

Command addMerge(CLI::App& app)
{
    CLI::App* const command =
        app.add_subcommand("merge", "Join the results of shards to the very bytes of a single run");
    auto const options = std::make_shared<MergeOptions>();
    command
        ->add_option("FILE", options->parts,
                     "What nodus eval --shard wrote, in any order: results (.csv or .jsonl) or\n"
                     "logs (.log).")
        ->required();
    command
        ->add_option(
            "--out", options->out,
            "Where the whole goes, of the same kind. The file appears whole or not at all.\n"
            "Without it, or with -: standard output.")
        ->type_name("FILE");
    command
        ->add_option(
            "--frames", options->frames,
            "The frames of all shards together, as nodus eval was given them: each has to\n"
            "be there once. Logs can do without.")
        ->type_name("A:B[:STEP]");
    command
        ->add_option("--data", options->data,
                     "The table that nodus eval was given: its rows tell the frames when --frames\n"
                     "does not.")
        ->type_name("TABLE.csv");
    command->footer(
        "Examples:\n"
        "  nodus merge part-*.csv --frames 0:999 --out result.csv\n"
        "  nodus merge part-*.log --out result.log\n\n"
        "Exit status:\n"
        "  0  the whole is written\n"
        "  1  the work failed, for want of memory for instance\n"
        "  2  an option or a file is wrong, or a frame is missing, there twice or none of\n"
        "     the whole's; then no file is written");
    return {command, [options] { return merge(*options); }};
}

}  // namespace nodus::tools
