// Times every kernel in three ways of calling, beside an empty call of the same shape and beside
// other libraries. Results are Google Benchmark's; `report` turns them into ratios.
//
// usage: nodusmath_benchmarks MODULE CATALOGUE [Google Benchmark's options]
#include "cases.h"
#include "distance.h"
#include "peers/peer.h"

#include "nodus/runtime/EvaluationScope.h"

#include <benchmark/benchmark.h>

#include <emmintrin.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>

using namespace nodus::bench;

namespace {

enum class Way {
    backToBack,     // over many nodes whose blocks lie in the first-level cache
    latency,        // a fence after each call: nothing overlaps
    freshlyWritten  // every input port written just before the call, as a graph's edges do
};
// One edge: a port's value, copied as a whole by moves of its own size.
struct Edge {
    std::size_t offset, size;

    [[gnu::always_inline]] void copy(std::byte* to, std::byte const* from) const
    {
        to += offset;
        from += offset;
        switch (size) {
        case 1:
            return moved<1>(to, from);
        case 4:
            return moved<4>(to, from);
        case 8:
            return moved<8>(to, from);
        case 12:
            moved<8>(to, from);
            return moved<4>(to + 8, from + 8);
        default:
            for (std::size_t done = 0; done < size; done += 16)
                moved<16>(to + done, from + done);
        }
    }

    template <std::size_t bytes> static void moved(std::byte* to, std::byte const* from)
    {
        std::memcpy(to, from, bytes);
    }
};

[[gnu::aligned(64)]] void emptyKernel(void const*, void*) {}
[[gnu::aligned(64)]] void emptyGenerator(void const*, void*, void*) {}

// What one benchmark calls, with blocks of its own.
struct Subject {
    Case what;
    Entry entry;
    std::unique_ptr<Nodes> nodes, sources;
    std::vector<Edge> edges;
    std::int32_t frame = 0;
};

template <Way way> void pass(Subject const& subject)
{
    for (std::size_t node = 0; node < subject.nodes->count(); ++node) {
        if constexpr (way == Way::freshlyWritten)
            for (Edge const& edge : subject.edges)
                edge.copy(subject.nodes->input(node), subject.sources->input(node));
        subject.entry.call(*subject.nodes, node);
        if constexpr (way == Way::latency)
            _mm_lfence();
    }
}

template <Way way> void run(benchmark::State& state, Subject& subject)
{
    nodus::runtime::EvaluationScope scope(subject.frame, nullptr);
    for (auto _ : state) {
        scope.setFrame(subject.frame += subject.what.frameStep);
        pass<way>(subject);
    }
    state.counters["calls"] = static_cast<double>(subject.nodes->count());
}

struct NamedWay {
    char const* name;
    void (*run)(benchmark::State& state, Subject& subject);
};
constexpr NamedWay kWays[] = {{"back_to_back", run<Way::backToBack>},
                              {"latency", run<Way::latency>},
                              {"fresh_ports", run<Way::freshlyWritten>}};

// The distance is of peers only.
void registerEveryWay(std::string const& name, std::string const& shape,
                      std::shared_ptr<Subject> const& subject,
                      std::optional<Distance> distance = std::nullopt)
{
    for (NamedWay const& way : kWays) {
        std::string const full = name + "/" + way.name;
        benchmark::RegisterBenchmark(full.c_str(), [=, run = way.run](benchmark::State& state) {
            run(state, *subject);
            state.SetLabel(shape);
            if (distance) {
                state.counters["distance"] = distance->absolute;
                state.counters["ulps"] = distance->ulps;
            }
        });
    }
}

std::shared_ptr<Subject> subjectOf(Case const& what, void* address)
{
    std::size_t const count = Nodes::cached(what);
    auto subject = std::make_shared<Subject>();
    subject->what = what;
    subject->entry = {address, what.workspaceSize != 0 && !what.isInit};
    subject->nodes = std::make_unique<Nodes>(what, count);
    subject->sources = std::make_unique<Nodes>(what, count);
    for (Port const& port : what.inputs)
        subject->edges.push_back({port.offset, port.shape.size});
    return subject;
}

// Two cases of one shape are called in exactly the same way.
std::string shapeOf(Case const& what)
{
    std::string shape;
    for (Port const& port : what.inputs)
        shape.append(std::to_string(port.shape.size)).append("+");
    shape.back() = ':';
    shape.append(std::to_string(what.outputSize)).append(":");
    shape.append(std::to_string(what.isInit ? 0 : what.workspaceSize));
    return shape;
}

std::vector<Peer> allPeers()
{
    std::vector<Peer> all = standardPeers();
    auto const add = [&](std::vector<Peer> const& more) {
        all.insert(all.end(), more.begin(), more.end());
    };
#ifdef NODUS_WITH_GLM
    add(glmPeers());
#endif
#ifdef NODUS_WITH_EIGEN
    add(eigenPeers());
#endif
#ifdef NODUS_WITH_IMATH
    add(imathPeers());
#endif
#ifdef NODUS_WITH_STB
    add(stbPeers());
#endif
    return all;
}

void registerCase(Case const& what, Module const& module, std::vector<Peer> const& peers,
                  std::set<std::string>& shapes)
{
    std::string const shape = shapeOf(what);
    if (shapes.insert(shape).second) {
        bool const takesThree = what.workspaceSize != 0 && !what.isInit;
        registerEveryWay("empty/" + shape, shape,
                         subjectOf(what, takesThree ? reinterpret_cast<void*>(&emptyGenerator)
                                                    : reinterpret_cast<void*>(&emptyKernel)));
    }
    auto const ours = subjectOf(what, module.find(what.kernel));
    initialize(what, *ours->nodes, module);
    registerEveryWay("module/" + what.name, shape, ours);

    for (Peer const& peer : peers) {
        if (peer.name != what.name)
            continue;
        Distance const distance =
            peer.otherValues ? Distance{-1, -1}
                             : distanceBetween(what, module.find(what.kernel), peer.function);
        auto const theirs = subjectOf(what, peer.function);
        if (peer.initialize != nullptr)
            for (std::size_t node = 0; node < theirs->nodes->count(); ++node)
                peer.initialize(theirs->nodes->input(node), theirs->nodes->workspace(node));
        registerEveryWay(peer.library + "/" + what.name, shape, theirs, distance);
    }
}

int runAll(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: nodusmath_benchmarks MODULE CATALOGUE [--benchmark_...]\n");
        return 2;
    }
    Module const module(argv[1]);
    std::vector<Peer> const peers = allPeers();
    std::set<std::string> shapes;
    for (Case const& what : casesOf(argv[2]))
        registerCase(what, module, peers, shapes);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

}  // namespace

int main(int argc, char** argv)
try {
    return runAll(argc, argv);
} catch (std::exception const& error) {
    std::fprintf(stderr, "nodusmath_benchmarks: %s\n", error.what());
    return 1;
}
