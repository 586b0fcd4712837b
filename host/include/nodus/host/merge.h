// Joining what several runs wrote, each for some of the frames, to what one run would have written.
#pragma once

#include "nodus/host/frames.h"
#include "nodus/host/output_file.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace nodus::host {

// Results as CSV, results as JSON lines, or log lines "frame 12: text".
enum class PartFormat { csv, jsonLines, log };

// By the extension, ".csv", ".jsonl" or ".log". Throws Fault for any other.
PartFormat partFormatOf(std::string const& path);

struct MergeOptions {
    std::vector<std::string> parts;  // of one format, in any order; regular files
    PartFormat format = PartFormat::csv;
    // The frames of the whole: without them it could not be told that the last ones are missing.
    // Results have each of them once; a log may be without, and then says nothing of them.
    std::optional<FrameRange> frames;
    // Called now and then with the number of lines that are done.
    std::function<void(std::uint64_t)> progress;
};

// Writes the lines of all parts in the order of the frames; the file is left to the caller to
// commit. Parts that are slices are open one at a time; memory does not grow with their length.
// Throws Fault: parts that differ in their columns, are cut off or are no results; frames that are
// missing, there twice or none of the whole's (the first twenty faults).
void merge(MergeOptions const& options, OutputFile& to);

}  // namespace nodus::host
