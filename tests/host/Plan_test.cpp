// Compiled graphs: what reaches a kernel, whatever way the plan takes to save moves.
#include "fixtures.h"

#include "nodus/String.h"
#include "nodus/host/evaluator.h"
#include "nodus/host/frame_log.h"
#include "nodus/runtime/CurrentFrame.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <numeric>

using namespace fixtures;

namespace {

// The float of each output lane by column name, for every frame.
std::vector<std::map<std::string, float>> floatsOf(Plan const& plan,
                                                   std::vector<std::int32_t> const& frames)
{
    Evaluator evaluator(plan, nullptr);
    std::vector<std::map<std::string, float>> results;
    for (std::size_t first = 0; first < frames.size(); first += plan.framesPerBlock) {
        auto const block =
            std::span(frames).subspan(first, std::min(plan.framesPerBlock, frames.size() - first));
        for (PlanSource const& source : plan.sources)
            for (std::size_t i = 0; i < block.size(); ++i)
                if (source.kind == Source::Kind::pixelX) {
                    float const x = static_cast<float>(block[i]) + 0.5f;
                    std::memcpy(evaluator.at(source.place, i), &x, sizeof x);
                }
        evaluator.evaluate(block);
        for (std::size_t i = 0; i < block.size(); ++i) {
            auto& result = results.emplace_back();
            for (PlanOutput const& output : plan.outputs)
                for (std::size_t lane = 0; lane < output.type->laneNames.size(); ++lane)
                    std::memcpy(
                        &result[output.name + "." + std::string(output.type->laneNames[lane])],
                        evaluator.at(output.place, i) + lane * 4, 4);
        }
    }
    return results;
}

Port intPort(std::string name)
{
    Port port;
    port.name = std::move(name);
    port.type = &valueType(TypeId::Int32);
    port.offset = 0;
    port.standard = neutralValue(*port.type);
    return port;
}

// Kernels of the test's own, with one Int32 in and one out.
NodeType nodeType(Solve solve)
{
    static Family const family{};
    NodeType type{};
    type.name = "Test";
    type.family = &family;
    type.inputs.push_back(intPort("value"));
    type.outputs.push_back(intPort("result"));
    type.inputExtent = type.outputExtent = 4;
    type.solve = solve;
    return type;
}

Graph lone(NodeType const& type, Source::Kind kind)
{
    Graph graph;
    graph.nodes.push_back({"n", &type, std::vector<std::byte>(type.inputExtent), {}, {}});
    graph.nodes.front().feeds.push_back({0, &valueType(TypeId::Int32), {kind}});
    graph.order = {0};
    graph.outputs.push_back({"n.result", 0, 0, &valueType(TypeId::Int32)});
    return graph;
}

std::int32_t intAt(Evaluator const& evaluator, std::size_t i)
{
    std::int32_t value = 0;
    std::memcpy(&value, evaluator.at(evaluator.plan().outputs.front().place, i), sizeof value);
    return value;
}

}  // namespace

// One output read many times, in place and moved; lanes, parts and whole values; both orders.
TEST(Plan, EveryConsumerSeesTheValue)
{
    Graph const graph = graphOf(R"({"nodes": {
        "x":    {"type": "Abs_Float", "inputs": {"value": {"pixel": "x"}}},
        "v":    {"type": "Add_Float3", "inputs": {"a": [{"from": "x"}, 10, {"pixel": "x"}], "b": [0, 0, 1]}},
        "twice":{"type": "Add_Float3", "inputs": {"a": {"from": "v"}, "b": {"from": "v"}}},
        "neg":  {"type": "Negate_Float3", "inputs": {"value": {"from": "v"}}},
        "back": {"type": "Negate_Float3", "inputs": {"value": {"from": "neg"}}},
        "mix":  {"type": "Sub_Float3", "inputs": {"a": {"from": "twice"}, "b": {"from": "neg"}}},
        "f4":   {"type": "Abs_Float4", "inputs": {"value": [{"from": "v.result.z"}, {"from": "v.result.x"}, -7, 0]}},
        "tqs":  {"type": "LogValueTQS", "inputs": {"value": {"t": [1, 2, 3, {"from": "x"}], "s": {"from": "f4"}}}},
        "q":    {"type": "Negate_Quaternion", "inputs": {"value": {"from": "tqs.result.q"}}},
        "m":    {"type": "Mul_Matrix4x4", "inputs": {"b": [1,0,0,0, 0,1,0,0, 0,0,1,0, {"from": "v.result.x"},0,0,1]}}},
        "outputs": ["v", "twice", "neg", "back", "mix", "f4", "tqs", "q", "m.result.m30", "m.result.m33"]})",
                                {"", nullptr, true});
    std::vector<std::int32_t> frames(150);
    std::iota(frames.begin(), frames.end(), 0);
    for (std::size_t const inBlock : {std::size_t{0}, std::size_t{1}, std::size_t{7}}) {
        Plan const plan = compile(graph, inBlock);
        auto const results = floatsOf(plan, frames);
        ASSERT_EQ(results.size(), frames.size());
        for (std::size_t i = 0; i < frames.size(); ++i) {
            float const x = static_cast<float>(frames[i]) + 0.5f;
            std::map<std::string, float> const expected{
                {"v.result.x", x},         {"v.result.y", 10},     {"v.result.z", x + 1},
                {"twice.result.x", 2 * x}, {"twice.result.y", 20}, {"twice.result.z", 2 * (x + 1)},
                {"neg.result.x", -x},      {"neg.result.y", -10},  {"neg.result.z", -(x + 1)},
                {"back.result.x", x},      {"back.result.y", 10},  {"back.result.z", x + 1},
                {"mix.result.x", 3 * x},   {"mix.result.y", 30},   {"mix.result.z", 3 * x + 3},
                {"f4.result.x", x + 1},    {"f4.result.y", x},     {"f4.result.z", 7},
                {"f4.result.w", 0},        {"tqs.result.t.x", 1},  {"tqs.result.t.y", 2},
                {"tqs.result.t.z", 3},     {"tqs.result.t.w", x},  {"tqs.result.q.x", 0},
                {"tqs.result.q.y", 0},     {"tqs.result.q.z", 0},  {"tqs.result.q.w", 1},
                {"tqs.result.s.x", x + 1}, {"tqs.result.s.y", x},  {"tqs.result.s.z", 7},
                {"tqs.result.s.w", 0},     {"q.result.x", 0},      {"q.result.y", 0},
                {"q.result.z", 0},         {"q.result.w", -1},     {"m.result.m30.", x},
                {"m.result.m33.", 1}};
            ASSERT_EQ(results[i], expected) << "frame " << i << ", block " << inBlock;
        }
    }
}

// Blocks where the contract wants them, and no move where one can be saved.
TEST(Plan, BlocksAreAlignedAndMovesAreFew)
{
    Plan const plan = compile(graphOf(R"({"nodes": {
        "a": {"type": "Add_Float3"},
        "b": {"type": "Negate_Float3", "inputs": {"value": {"from": "a"}}},
        "c": {"type": "Sub_Float3", "inputs": {"a": {"from": "b"}, "b": {"from": "a"}}},
        "d": {"type": "Abs_UInt8"},
        "e": {"type": "Abs_Float", "inputs": {"value": {"from": "a.result.y"}}}}})"));
    EXPECT_EQ(plan.moves.size(), 2u);  // of a to the second port of c, of its lane y to e
    EXPECT_EQ(plan.arenaSize % 64, 0u);
    EXPECT_EQ(plan.framesPerBlock, 64u);
    for (Step const& step : plan.steps)
        for (std::size_t const number :
             {step.in.offset, step.in.stride, step.out.offset, step.out.stride})
            EXPECT_EQ(number % 16, 0u);
}

// Both outputs lie in one block, which no port of another node can stand for.
TEST(Plan, ANodeMayHaveTwoOutputs)
{
    NodeType split = nodeType([](void const* in, void* out) {
        auto const value = *static_cast<std::int32_t const*>(in);
        static_cast<std::int32_t*>(out)[0] = value / 10;
        static_cast<std::int32_t*>(out)[1] = value % 10;
    });
    split.outputs.push_back(intPort("units"));
    split.outputs.back().offset = 4;
    split.outputExtent = 8;
    NodeType join = nodeType([](void const* in, void* out) {
        auto const* const ports = static_cast<std::int32_t const*>(in);
        *static_cast<std::int32_t*>(out) = ports[0] * 1000 + ports[1];
    });
    join.inputs.push_back(intPort("second"));
    join.inputs.back().offset = 4;
    join.inputExtent = 8;

    Graph graph = lone(split, Source::Kind::frame);
    graph.nodes.push_back(makeNode("join", join));
    GraphNode& taker = graph.nodes.back();
    taker.feeds.push_back({0, &valueType(TypeId::Int32), {Source::Kind::node, 0, 0}});
    taker.constants[4] = std::byte{3};
    graph.order = {0, 1};
    graph.outputs = {{"join.result", 1, 0, &valueType(TypeId::Int32)}};
    Plan const plan = compile(graph, 2);
    Evaluator evaluator(plan, nullptr);
    std::int32_t const frames[] = {47, 120};
    evaluator.evaluate(frames);
    EXPECT_EQ(intAt(evaluator, 0), 4003);
    EXPECT_EQ(intAt(evaluator, 1), 12003);
}

TEST(Plan, AnOutputLeftAloneIsZeroInEveryFrame)
{
    NodeType const sometimes = nodeType([](void const* in, void* out) {
        if (*static_cast<std::int32_t const*>(in) % 2 == 0)
            *static_cast<std::int32_t*>(out) = 5;
    });
    Plan const plan = compile(lone(sometimes, Source::Kind::frame), 4);
    Evaluator evaluator(plan, nullptr);
    std::int32_t const even[] = {0, 2, 4, 6}, odd[] = {1, 3, 5, 8};
    evaluator.evaluate(even);
    EXPECT_EQ(intAt(evaluator, 1), 5);
    evaluator.evaluate(odd);
    EXPECT_EQ(intAt(evaluator, 1), 0);
    EXPECT_EQ(intAt(evaluator, 3), 5);
}

TEST(Plan, KernelsSeeTheirFrame)
{
    NodeType const asks = nodeType([](void const*, void* out) {
        *static_cast<std::int32_t*>(out) = nodus::runtime::GetCurrentFrame();
    });
    Plan const plan = compile(lone(asks, Source::Kind::frame), 4);
    Evaluator evaluator(plan, nullptr);
    std::int32_t const frames[] = {-5, 0, 2147483647};
    evaluator.evaluate(frames);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(intAt(evaluator, i), frames[i]);
}

// Init runs once for each workspace, before the first call, with the first frame and its inputs.
TEST(Plan, AWorkspaceIsInitialisedAndWalksThroughTheFrames)
{
    struct Workspace {
        std::int32_t initialised, frame, input, calls;
    };
    NodeType counts = nodeType(nullptr);
    counts.workspace.push_back(intPort("initialised"));
    counts.workspaceExtent = sizeof(Workspace);
    counts.init = [](void const* in, void* workspace) {
        auto& mine = *static_cast<Workspace*>(workspace);
        mine.frame = nodus::runtime::GetCurrentFrame();
        mine.input = *static_cast<std::int32_t const*>(in);
        ++mine.initialised;
    };
    counts.solveWithWorkspace = [](void const*, void* workspace, void* out) {
        auto& mine = *static_cast<Workspace*>(workspace);
        ++mine.calls;
        *static_cast<std::int32_t*>(out) =
            mine.initialised * 1000 + mine.frame * 100 + mine.input * 10 + mine.calls;
    };
    Plan const plan = compile(lone(counts, Source::Kind::frame), 2);
    for (int arena = 0; arena < 2; ++arena) {
        Evaluator evaluator(plan, nullptr);
        std::int32_t const first[] = {3, 4}, second[] = {5};
        evaluator.evaluate(first);
        EXPECT_EQ(intAt(evaluator, 0), 1331);
        EXPECT_EQ(intAt(evaluator, 1), 1332);
        evaluator.evaluate(second);
        EXPECT_EQ(intAt(evaluator, 0), 1333);
    }
}

// Texts are shared from the constant to the last output, and the counts balance (a leak checker and
// the address sanitizer look on).
TEST(Plan, TextsAreSharedNotCopied)
{
    Plan const plan = compile(graphOf(R"({"nodes": {
        "a": {"type": "LogValueString", "inputs": {"value": "hello", "prefix": "p "}},
        "b": {"type": "LogValueString", "inputs": {"value": {"from": "a"}, "prefix": {"from": "a"}}},
        "c": {"type": "LogValueString", "inputs": {"prefix": {"from": "b"}}}},
        "outputs": ["a", "b", "c"]})"));
    FrameLog log;
    Evaluator evaluator(plan, &log);
    std::int32_t const frames[] = {1, 2};
    for (int round = 0; round < 3; ++round)
        evaluator.evaluate(frames);
    auto const text = [&](std::size_t output) -> std::string const& {
        return *reinterpret_cast<nodus::String const*>(evaluator.at(plan.outputs[output].place, 1));
    };
    EXPECT_EQ(text(0), "hello");
    EXPECT_EQ(&text(0), &text(1));
    EXPECT_EQ(text(2), "");
    TextBuffer lines;
    log.takeLines(lines);
    std::string once;
    for (char const* const frame : {"frame 1: ", "frame 2: "})
        for (int round = 0; round < 3; ++round)
            (((once += frame) += "p hello\n") += frame) +=
                std::string("hellohello\n") + frame + "hello\n";
    EXPECT_EQ(lines.view(), once);
}
