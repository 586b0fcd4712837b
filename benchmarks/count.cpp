// Runs every kernel for callgrind, which dumps its counts after each case, headed "CALLS NAME", and
// after loading the module. instructions.py starts this and reads them.
//
// usage: bench_count MODULE   prints what the counts hold for
#include "cases.h"

#include "nodus/runtime/EvaluationScope.h"

#include <dlfcn.h>

#include <cstdio>

// Its requests are macros of another style.
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wconversion"
#include <valgrind/callgrind.h>

using namespace nodus::bench;

namespace {

constexpr std::size_t kNodes = 64, kPasses = 2;

void count(Case const& what)
{
    nodus::runtime::EvaluationScope scope(0, nullptr);
    Nodes const nodes(what, kNodes);
    std::int32_t frame = 0;
    auto const pass = [&] {
        scope.setFrame(frame += what.frameStep);
        for (std::size_t node = 0; node < kNodes; ++node)
            nodes.call(node);
    };
    pass();  // what is built on the first call does not count
    CALLGRIND_ZERO_STATS;
    for (std::size_t i = 0; i < kPasses; ++i)
        pass();
    CALLGRIND_DUMP_STATS_AT((std::to_string(kPasses * kNodes) + " " + what.name).c_str());
}

}  // namespace

int main(int, char** argv)
try {
    std::puts(NODUS_COMPILER);
    for (Loaded const loaded(argv[1]); Case const& what : casesOf(loaded.catalogue))
        count(what);
    CALLGRIND_ZERO_STATS;
    dlopen(argv[1], RTLD_NOW);
    CALLGRIND_DUMP_STATS_AT("1 loading");
} catch (std::exception const& error) {
    std::fprintf(stderr, "bench_count: %s\n", error.what());
    return 1;
}
