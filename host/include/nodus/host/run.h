// Evaluating many frames: rows in, blocks over threads, lines out in order.
#pragma once

#include "nodus/host/frames.h"
#include "nodus/host/output_file.h"
#include "nodus/host/plan.h"
#include "nodus/host/result_writer.h"
#include "nodus/host/summary.h"
#include "nodus/host/table.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

namespace nodus::host {

struct RunOptions {
    std::size_t threads = 1;
    // Without a range: a frame for each row of the table, counted from 0, or frame 0 alone.
    std::optional<FrameRange> frames;
    // With a table and a range, frame N reads row N.
    TableReader* table = nullptr;
    ResultFormat format = ResultFormat::csv;
    OutputFile* results = nullptr;
    OutputFile* log = nullptr;  // lines "frame 12: text", in the order of the frames
    // When somebody reads along: called before log lines are written, which then do not wait.
    std::function<void()> beforeLog;
    // Made of the same plan, and new: what the results are is added to it.
    Summary* summary = nullptr;
    // Called now and then, by one thread at a time, with the number of frames that are done.
    std::function<void(std::uint64_t)> progress;
};

// Evaluates and writes; the files are left to the caller to commit. The bytes do not depend on the
// number of threads, memory does not grow with the number of frames. Returns the number of frames.
// Throws Fault: faults of the table (the first twenty), frames outside of it, files that cannot be
// written.
std::uint64_t run(Plan const& plan, RunOptions const& options);

}  // namespace nodus::host
