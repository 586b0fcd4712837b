// Hands measurements to Google Benchmark, and is the main function of every benchmark.
#include "measure.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

namespace nodus::bench {

void add(std::string_view name, std::vector<Work> const& threads, Details const& details)
{
    auto const calls = static_cast<std::int64_t>(details.calls);
    auto const run = [threads, calls, beside = std::string(details.beside),
                      facts = details.facts](benchmark::State& state) {
        Work const& work = threads[static_cast<std::size_t>(state.thread_index())];
        for (auto _ : state)
            work();
        state.SetItemsProcessed(state.iterations() * calls);
        state.SetLabel(beside);
        for (Fact const& fact : facts)
            state.counters[fact.name] = fact.value;
    };
    auto* const added = benchmark::RegisterBenchmark(std::string(name).c_str(), run);
    added->Threads(static_cast<int>(threads.size()));
    if (details.onTheWall)
        added->UseRealTime();
}

void measure() { benchmark::RunSpecifiedBenchmarks(); }

}  // namespace nodus::bench

int main(int argc, char** argv)
try {
    benchmark::Initialize(&argc, argv);
    nodus::bench::benchmarks({argv + 1, argv + argc});
} catch (std::exception const& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 1;
}
