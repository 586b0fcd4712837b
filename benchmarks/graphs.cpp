// Times the evaluator: what a node costs beyond its kernel, and how far two threads carry.
//
// usage: bench_graphs MODULE [Google Benchmark's options]
#include "cases.h"
#include "measure.h"

#include "nodus/host/evaluator.h"

#include <algorithm>
#include <deque>
#include <numeric>
#include <random>

using namespace nodus::bench;
using namespace nodus::host;

namespace {

constexpr std::size_t kGraphSizes[] = {10, 1000, 100000};
constexpr char const* kTypes[] = {
    "Add_Float",        "Mul_Float",           "Add_Float3",  "MultiplyByScalar_Float3",
    "Normalize_Float3", "DotProduct_Float3",   "Clamp_Float", "AxisAndAngleToQuaternion_Float3",
    "Mul_Quat",         "RotateVector_Float3", "Sub_Float",   "SmoothStep_Float",
};

// A graph as a rig has it: sums, products, vectors, rotations. Each input comes from one of the
// last few nodes that have its type; where there is none, it keeps its standard value.
Graph rig(Catalogue const& catalogue, std::size_t nodes)
{
    constexpr std::size_t kNear = 8;
    std::minstd_rand random(1);
    std::map<ValueType const*, std::vector<std::size_t>> byOutput;
    Graph graph;
    for (std::size_t index = 0; index < nodes; ++index) {
        NodeType const& type = *catalogue.find(kTypes[index % std::size(kTypes)]);
        GraphNode& node = graph.nodes.emplace_back(makeNode(std::to_string(index), type));
        for (Port const& port : type.inputs)
            if (auto const& known = byOutput[port.type]; !known.empty()) {
                std::size_t const back = 1 + random() % std::min(known.size(), kNear);
                Source const source = {Source::Kind::node, known[known.size() - back], 0};
                node.feeds.push_back({port.offset, port.type, source});
            }
        byOutput[type.outputs[0].type].push_back(index);
        graph.order.push_back(index);
    }
    graph.outputs.push_back({"last", nodes - 1, 0, graph.nodes.back().type->outputs[0].type});
    return graph;
}

// One thread's arena over a plan.
class Thread {
public:
    explicit Thread(Plan const& plan) : m_evaluator(plan, nullptr), m_frames(plan.framesPerBlock)
    {
        std::iota(m_frames.begin(), m_frames.end(), 0);
        for (Step const& step : plan.steps)
            m_calls.push_back({step.solve, m_evaluator.at(step.in, 0), m_evaluator.at(step.out, 0),
                               step.in.stride, step.out.stride});
        evaluate();
    }

    // A block of frames, as nodus eval does it.
    void evaluate() { m_evaluator.evaluate(m_frames); }

    // The kernels of a block over the same memory and in the same order, and nothing else.
    void callKernels()
    {
        for (auto [solve, in, out, inStride, outStride] : m_calls)
            for (std::size_t i = 0; i < m_frames.size(); ++i, in += inStride, out += outStride)
                solve(in, out);
    }

private:
    struct Call {
        Solve solve;
        std::byte const* in;
        std::byte* out;
        std::size_t inStride, outStride;
    };
    Evaluator m_evaluator;
    std::vector<std::int32_t> m_frames;
    std::vector<Call> m_calls;
};

}  // namespace

void nodus::bench::benchmarks(Arguments const& arguments)
{
    Loaded const loaded(arguments.at(0));
    std::deque<Plan> plans;
    std::deque<Thread> threads;
    for (std::size_t const nodes : kGraphSizes) {
        Plan const& plan = plans.emplace_back(compile(rig(loaded.catalogue, nodes)));
        Thread& first = threads.emplace_back(plan);
        Thread& second = threads.emplace_back(plan);
        Work const evaluate = [&] { first.evaluate(); };
        std::size_t const calls = plan.steps.size() * plan.framesPerBlock;
        std::string const graph = "graph/" + std::to_string(nodes);
        std::string const kernels = graph + "/kernels", two = graph + "/two_threads";
        add(graph + "/over_kernels", {evaluate}, {.beside = kernels, .calls = calls});
        add(kernels, {[&] { first.callKernels(); }}, {.calls = calls});
        add(graph + "/with_two_threads", {evaluate},
            {.beside = two, .calls = calls, .onTheWall = true});
        add(two, {evaluate, [&] { second.evaluate(); }}, {.calls = calls, .onTheWall = true});
    }
    measure();
}
