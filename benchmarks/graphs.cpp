// Times the evaluator: what a node costs beyond its kernel, what many rows at once gain over calls,
// and how far two threads carry.
//
// usage: bench_graphs MODULE [Google Benchmark's options]
#include "cases.h"
#include "fused.h"
#include "measure.h"

#include "nodus/host/evaluator.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <numeric>
#include <random>
#include <span>
#include <stdexcept>

using namespace nodus::bench;
using namespace nodus::host;

namespace {

constexpr std::size_t kGraphSizes[] = {10, 1000, 100000};
constexpr char const* kTypes[] = {
    "Add_Float",        "Mul_Float",           "Add_Float3",  "MultiplyByScalar_Float3",
    "Normalize_Float3", "DotProduct_Float3",   "Clamp_Float", "AxisAndAngleToQuaternion_Float3",
    "Mul_Quat",         "RotateVector_Float3", "Sub_Float",   "SmoothStep_Float",
};

// Graphs of one kind of value: many of the nodes take what does not depend on the frame.
constexpr char const* kVectors[] = {"MultiplyByScalar_Float3", "Add_Float3", "CrossProduct_Float3",
                                    "Sub_Float3"};
constexpr char const* kRotations[] = {"AxisAndAngleToQuaternion_Float3", "Mul_Quat", "Conj_Quat",
                                      "Slerp_Quat"};
// Made in one piece, as fused.h has it.
constexpr char const* kCheap[] = {"Add_Float", "Mul_Float", "Sub_Float", "Clamp_Float"};

// Adds the frame as a Float.
void addFrame(Catalogue const& catalogue, Graph& graph)
{
    NodeType const& type = *catalogue.find("CastInt32ToFloat");
    GraphNode& node = graph.nodes.emplace_back(makeNode("frame", type));
    node.feeds.push_back({type.inputs[0].offset, type.inputs[0].type, {Source::Kind::frame, 0, 0}});
    graph.order.push_back(0);
}

Graph cheap(Catalogue const& catalogue, std::size_t nodes)
{
    Graph graph;
    addFrame(catalogue, graph);
    for (std::size_t index = 1; index <= nodes; ++index) {
        NodeType const& type = *catalogue.find(kCheap[(index - 1) % std::size(kCheap)]);
        GraphNode& node = graph.nodes.emplace_back(makeNode(std::to_string(index), type));
        auto const feed = [&](std::size_t port, std::size_t back) {
            Source const source = {Source::Kind::node, index > back ? index - back : 0, 0};
            node.feeds.push_back({type.inputs[port].offset, type.inputs[port].type, source});
        };
        auto const keep = [&](std::size_t port, float value) {
            std::memcpy(node.constants.data() + type.inputs[port].offset, &value, sizeof value);
        };
        std::size_t const kind = (index - 1) % std::size(kCheap);
        feed(0, 1);
        if (kind == 0)
            feed(1, 2);
        if (kind == 1)
            keep(1, 0.5f);
        if (kind == 2)
            feed(1, 3);
        if (kind == 3) {
            keep(1, -100.0f);
            keep(2, 100.0f);
        }
        graph.order.push_back(index);
    }
    graph.outputs.push_back({"last", nodes, 0, graph.nodes.back().type->outputs[0].type});
    return graph;
}

// A graph as a rig has it: sums, products, vectors, rotations. Each input comes from one of the
// last few nodes that have its type; where there is none, it keeps its standard value. Listed are
// the nodes that nobody takes from.
Graph rig(Catalogue const& catalogue, std::span<char const* const> types, std::size_t nodes)
{
    constexpr std::size_t kNear = 8;
    std::minstd_rand random(1);
    std::map<ValueType const*, std::vector<std::size_t>> byOutput;
    Graph graph;
    addFrame(catalogue, graph);
    byOutput[graph.nodes[0].type->outputs[0].type].push_back(0);
    std::vector<bool> isTaken(nodes + 1);
    for (std::size_t index = 1; index <= nodes; ++index) {
        NodeType const& type = *catalogue.find(types[index % types.size()]);
        GraphNode& node = graph.nodes.emplace_back(makeNode(std::to_string(index), type));
        for (Port const& port : type.inputs)
            if (auto const& known = byOutput[port.type]; !known.empty()) {
                std::size_t const back = 1 + random() % std::min(known.size(), kNear);
                Source const source = {Source::Kind::node, known[known.size() - back], 0};
                isTaken[source.index] = true;
                node.feeds.push_back({port.offset, port.type, source});
            }
        byOutput[type.outputs[0].type].push_back(index);
        graph.order.push_back(index);
    }
    for (std::size_t index = 0; index <= nodes; ++index)
        if (!isTaken[index])
            graph.outputs.push_back(
                {graph.nodes[index].name, index, 0, graph.nodes[index].type->outputs[0].type});
    return graph;
}

// One thread's arena over a plan of calls.
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

// One thread's arena over a plan, and some thousand rows.
class Rows {
public:
    explicit Rows(Plan const& plan) : m_plan(plan), m_evaluator(plan, nullptr), m_frames(kCount)
    {
        std::iota(m_frames.begin(), m_frames.end(), 0);
        evaluate();
    }
    static constexpr std::size_t kCount = 4096;

    void evaluate()
    {
        for (std::size_t first = 0; first < kCount; first += m_plan.framesPerBlock)
            m_evaluator.evaluate(std::span(m_frames).subspan(
                first, std::min(m_plan.framesPerBlock, kCount - first)));
    }
    void loop(decltype(&fused100) fused) { fused(m_frames.data(), m_fused.data(), kCount); }

    // Only what computes the same may be compared.
    void requireSame(decltype(&fused100) fused)
    {
        loop(fused);
        std::size_t const last = (kCount - 1) % m_plan.framesPerBlock;
        std::uint32_t bits = 0;
        std::memcpy(&bits, m_evaluator.at(m_plan.outputs[0].place, last), sizeof bits);
        if (bits != std::bit_cast<std::uint32_t>(m_fused.back()))
            throw std::runtime_error("the loop and the graph differ");
    }

private:
    Plan const& m_plan;
    Evaluator m_evaluator;
    std::vector<std::int32_t> m_frames;
    std::vector<float> m_fused = std::vector<float>(kCount);
};

void addRows(std::string const& name, Graph const& graph, decltype(&fused100) fused)
{
    static std::deque<Plan> plans;
    static std::deque<Rows> rows;
    std::size_t const calls = graph.nodes.size() * Rows::kCount;
    std::string const group = "rows/" + name, beside = group + "/rows";
    Rows& calling = rows.emplace_back(plans.emplace_back(compile(graph)));
    Plan const& plan = plans.emplace_back(compileRows(graph));
    Rows &first = rows.emplace_back(plan), &second = rows.emplace_back(plan);
    Work const evaluate = [&] { first.evaluate(); };
    add(beside, {evaluate}, {.calls = calls});
    add(group + "/one_by_one", {[&] { calling.evaluate(); }}, {.beside = beside, .calls = calls});
    std::string const two = group + "/two_threads";
    add(group + "/with_two_threads", {evaluate},
        {.beside = two, .calls = calls, .onTheWall = true});
    add(two, {evaluate, [&] { second.evaluate(); }}, {.calls = calls, .onTheWall = true});
    if (fused == nullptr)
        return;
    first.requireSame(fused);
    add(group + "/over_fused", {evaluate}, {.beside = group + "/fused", .calls = calls});
    add(group + "/fused", {[&first, fused] { first.loop(fused); }}, {.calls = calls});
}

}  // namespace

void nodus::bench::benchmarks(Arguments const& arguments)
{
    Loaded const loaded(arguments.at(0));
    std::deque<Plan> plans;
    std::deque<Thread> threads;
    for (std::size_t const nodes : kGraphSizes) {
        Plan const& plan = plans.emplace_back(compile(rig(loaded.catalogue, kTypes, nodes)));
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
    addRows("100 cheap Float", cheap(loaded.catalogue, 100), &fused100);
    addRows("1,000 cheap Float", cheap(loaded.catalogue, 1000), &fused1000);
    addRows("100 Float3", rig(loaded.catalogue, kVectors, 100), nullptr);
    addRows("100 Quaternion", rig(loaded.catalogue, kRotations, 100), nullptr);
    addRows("100 of a rig", rig(loaded.catalogue, kTypes, 100), nullptr);
    measure();
}
