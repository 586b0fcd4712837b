// Times every kernel in three ways of calling, beside an empty call of the same shape and beside
// other libraries.
//
// usage: bench_kernels MODULE [Google Benchmark's options]
#include "measure.h"
#include "peers/peer.h"

#include "nodus/runtime/EvaluationScope.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>

using namespace nodus;
using namespace nodus::bench;

namespace {

enum class Way {
    backToBack,     // over many nodes whose blocks lie in the first-level cache
    latency,        // a fence after each call: nothing overlaps
    freshlyWritten  // every input port written just before the call, as a graph's edges do
};

template <std::size_t bytes> void move(std::byte* to, std::byte const* from)
{
    std::memcpy(to, from, bytes);
}

// A port's value, copied as a whole by moves of its own size.
[[gnu::always_inline]] inline void copyPort(std::byte* to, std::byte const* from, std::size_t size)
{
    switch (size) {
    case 1:
        return move<1>(to, from);
    case 4:
        return move<4>(to, from);
    case 8:
        return move<8>(to, from);
    case 12:
        move<8>(to, from);
        return move<4>(to + 8, from + 8);
    default:
        for (std::size_t done = 0; done < size; done += 16)
            move<16>(to + done, from + done);
    }
}

// As many nodes as lie in half of the smallest first-level cache around, with a copy of their
// inputs.
std::size_t cachedNodes(host::NodeType const& type)
{
    std::size_t const node = 2 * type.inputExtent + type.outputExtent + type.workspaceExtent;
    return std::clamp<std::size_t>(std::size_t{16} * 1024 / node, 16, 128);
}

// What one measurement calls, with blocks of its own.
struct Subject {
    Subject(Case const& what, runtime::EvaluationScope& around)
        : nodes(what, cachedNodes(*what.type)), sources(what, nodes.count()), scope(around),
          frameStep(what.frameStep)
    {
        for (host::Port const& port : what.type->inputs)
            edges.push_back({port.offset, port.type->size});
    }

    // Blocks are looked up for each call: with all addresses at hand, a load may overtake the write
    // of its port, and is made again.
    template <Way way> void pass()
    {
        scope.setFrame(frame += frameStep);
        for (std::size_t node = 0; node < nodes.count(); ++node) {
            if constexpr (way == Way::freshlyWritten)
                for (auto const& [offset, size] : edges)
                    copyPort(nodes.input(node) + offset, sources.input(node) + offset, size);
            nodes.call(node);
            if constexpr (way == Way::latency)
                _mm_lfence();
        }
    }

    struct Edge {
        std::size_t offset, size;
    };
    Nodes const nodes, sources;
    std::vector<Edge> edges;
    runtime::EvaluationScope& scope;
    std::int32_t frame = 0, frameStep;
};

void addEveryWay(std::string const& name, std::string const& beside,
                 std::shared_ptr<Subject> const& subject, std::vector<Fact> const& facts = {})
{
    auto const addWay = [&](std::string const& way, Work const& work) {
        add(name + way, {work},
            {.beside = beside.empty() ? beside : beside + way,
             .calls = subject->nodes.count(),
             .facts = facts});
    };
    addWay("/back_to_back", [=] { subject->pass<Way::backToBack>(); });
    addWay("/latency", [=] { subject->pass<Way::latency>(); });
    addWay("/fresh_ports", [=] { subject->pass<Way::freshlyWritten>(); });
}

[[gnu::aligned(64)]] void emptyKernel(void const*, void*) {}
[[gnu::aligned(64)]] void emptyGenerator(void const*, void*, void*) {}

Case emptyCall(Case what)
{
    what.function = what.initialize == nullptr ? reinterpret_cast<void*>(&emptyKernel)
                                               : reinterpret_cast<void*>(&emptyGenerator);
    return what;
}

// Two cases of one shape are called in exactly the same way.
std::string shapeOf(Case const& what)
{
    std::string shape;
    for (host::Port const& port : what.type->inputs)
        shape += (shape.empty() ? "" : "+") + std::to_string(port.type->size);
    return shape + ":" + std::to_string(what.type->outputExtent) + ":" +
           std::to_string(what.initialize == nullptr ? 0 : what.type->workspaceExtent);
}

}  // namespace

void nodus::bench::benchmarks(Arguments const& arguments)
{
    Loaded const loaded(arguments.at(0));
    runtime::EvaluationScope scope(0, nullptr);
    auto const subject = [&](Case const& what) { return std::make_shared<Subject>(what, scope); };
    std::set<std::string> shapes;
    for (Case const& what : casesOf(loaded.catalogue)) {
        std::string const empty = "empty/" + shapeOf(what), kernel = "kernel/" + what.name;
        if (shapes.insert(empty).second)
            addEveryWay(empty, "", subject(emptyCall(what)));
        addEveryWay(kernel, empty, subject(what));
        for (Peer const& peer : peersOf(what.name)) {
            Case theirs = what;
            theirs.function = peer.function;
            theirs.initialize = peer.initialize;
            addEveryWay("peer/" + what.name + ": " + peer.library, kernel, subject(theirs),
                        peer.otherValues ? std::vector<Fact>() : distanceBetween(what, theirs));
        }
    }
    measure();
}
