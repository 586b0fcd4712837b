// Compiled graphs: what reaches a kernel, whatever way the plan takes to save moves.
#include "fixtures.h"

#include "nodus/String.h"
#include "nodus/host/evaluator.h"
#include "nodus/host/frame_log.h"
#include "nodus/runtime/CurrentFrame.h"

#include <cstdint>
#include <cstring>

using namespace fixtures;

namespace {

std::int32_t intAt(Evaluator const& evaluator, std::size_t i)
{
    std::int32_t value = 0;
    std::memcpy(&value, evaluator.at(evaluator.plan().outputs.front().place, i), sizeof value);
    return value;
}

}  // namespace

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

// Init runs once for each workspace, before the first call, with the first frame and its inputs.
TEST(Plan, AWorkspaceIsInitialisedAndWalksThroughTheFrames)
{
    struct Workspace {
        std::int32_t initialised, frameAndInput, calls;
    };
    NodeType counts = *catalogue().find("RandomGenerator_Int32");
    counts.init = [](void const* in, void* workspace) {
        auto& mine = *static_cast<Workspace*>(workspace);
        mine.frameAndInput =
            nodus::runtime::GetCurrentFrame() * 10 + *static_cast<std::int32_t const*>(in);
        ++mine.initialised;
    };
    counts.solveWithWorkspace = [](void const*, void* workspace, void* out) {
        auto& mine = *static_cast<Workspace*>(workspace);
        *static_cast<std::int32_t*>(out) =
            mine.initialised * 1000 + mine.frameAndInput * 10 + ++mine.calls;
    };
    Graph graph = graphOf(R"({"nodes": {"n": {"type": "RandomGenerator_Int32",
        "inputs": {"seed": {"frame": true}}}}, "outputs": ["n"]})");
    graph.nodes.front().type = &counts;
    Plan const plan = compile(graph, 2);
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
