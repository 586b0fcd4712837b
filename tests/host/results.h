// What a plan writes, for frames or for the rows of a table, on any number of threads.
#pragma once

#include "fixtures.h"
#include "support/temporary_folder.h"

#include "nodus/host/run.h"

#include <tbb/global_control.h>

#include <optional>

namespace fixtures {

struct Results {
    std::string text, log, faults;

    bool operator==(Results const&) const = default;
};

// Without a table when its text is empty; "" are all of its rows, or frame 0.
inline Results resultsOf(Plan const& plan, std::size_t threads, std::string const& table,
                         std::string const& frames = "")
{
    support::TemporaryFolder const folder;
    Results made;
    // Every run has new threads: the thread sanitizer cannot see how old ones are given work.
    tbb::task_scheduler_handle threadsOfThisRun{tbb::attach{}};
    made.faults = faultsOf([&] {
        std::optional<TableReader> reader;
        if (!table.empty())
            reader.emplace(folder.write("t.csv", table));
        auto results = OutputFile::open(folder / "results");
        auto log = OutputFile::open(folder / "log");
        RunOptions options;
        options.threads = threads;
        options.table = reader ? &*reader : nullptr;
        if (!frames.empty())
            options.frames = parseFrames(frames);
        options.results = &results;
        options.log = &log;
        run(plan, options);
        results.commit();
        log.commit();
    });
    EXPECT_TRUE(tbb::finalize(threadsOfThisRun, std::nothrow));
    if (auto const at = made.faults.find(folder / ""); at != made.faults.npos)
        made.faults.erase(at, (folder / "").size());
    EXPECT_TRUE(made.faults.empty() || folder.names().size() == 1) << "something was left behind";
    made.text = folder.read("results");
    made.log = folder.read("log");
    return made;
}

}  // namespace fixtures
