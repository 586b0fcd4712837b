// A graph compiled for evaluation: flat lists of kernel calls and moves over one arena.
//
// The arena holds the blocks of every node for a number of frames at once, the blocks of one node
// side by side. Evaluation takes node by node and for each all the frames, so that a kernel's code
// stays hot. Where a block's place is free to choose it saves the move: a node with one input reads
// its source's output where it lies, and an output that feeds the beginning of an input block is
// written there.
#pragma once

#include "nodus/host/graph.h"
#include "nodus/runtime/Rows.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nodus::host {

// Something in the arena: for frame i of a block at offset + i * stride. Narrow, as all that a step
// is made of: in large graphs the plan itself is what has to be fetched.
struct Place {
    std::uint32_t offset = 0;
    std::uint32_t stride = 0;
};

// One type's worth of bytes (or a shared text) from one place to another.
struct Move {
    Place from, to;
    TypeId type;
};

struct Step {
    Solve solve;                            // null for a node with a workspace
    SolveWithWorkspace solveWithWorkspace;  // null for all others
    InitWorkspace init;
    Place in, out;
    std::uint32_t workspace;
    std::uint32_t outExtent;  // set to zero before each call; 0 where the output is a text
    std::uint32_t firstMove, moveCount;
    std::int32_t shift;  // the frames that it sees come so many later; then nobody hears it
};

// A kernel over all rows of a block. Each of its ports has a place of its own: rows lie side by
// side there, or where another node's output or a source has them, or all are one (stride 0).
struct RowStep {
    runtime::SolveRows solve;  // null: the kernel has no rows, steps[step] is called row by row
    bool needsFrames, clearsOutputs;
    std::uint32_t step;
    std::uint32_t firstMove, moveCount;  // for inputs that are put together from several sources
    std::uint32_t firstPort, inputCount, outputCount;  // in ports: the inputs, then the outputs
    std::int32_t shift;                                // as a step's
};

// Values that the caller writes before each block of frames; those of frames the evaluator does.
struct PlanSource {
    Source::Kind kind;  // never node, nor parameter
    std::size_t column;
    ValueType const* type;
    Place place;
    std::int32_t shift = 0;  // the value is that of a row so much later
    // In place of a row that the table has not; without it the nearest row's.
    std::optional<std::array<std::byte, 8>> beyond{};

    bool isOf(Feed const& feed) const
    {
        Source const& source = feed.source;
        return kind == source.kind && type == feed.type && shift == source.shift &&
               beyond == source.beyond && (kind != Source::Kind::column || column == source.index);
    }
};

struct PlanOutput {
    std::string name;
    ValueType const* type;
    Place place;
};

struct Plan {
    // Bytes that are the same in every frame, written once when an arena is made.
    struct Constant {
        Place place;
        std::size_t begin, size;  // in constantBytes
    };
    // A String object that lives as long as the arena.
    struct Text {
        Place place;
        std::optional<std::size_t> constant;  // in constantTexts
    };

    std::vector<Step> steps;
    // A plan for rows goes by these instead. The first onceCount are for what no row changes.
    std::vector<RowStep> rowSteps;
    std::vector<Place> ports;
    std::size_t onceCount = 0;
    std::vector<Move> moves;
    std::vector<PlanSource> sources;
    std::vector<PlanOutput> outputs;
    std::vector<Constant> constants;
    std::vector<std::byte> constantBytes;
    std::vector<Text> texts;
    std::vector<std::string> constantTexts;
    std::size_t framesPerBlock = 1;
    std::size_t arenaSize = 0;
};

// Compiles a checked graph. framesPerBlock 0: as many as keep the arena in a core's own cache, from
// 4 to 64. Throws Fault when the arena would be larger than 4 GiB. The result refers to the
// catalogue, not to the graph; it is immutable, and any number of evaluators on any threads may
// share it.
Plan compile(Graph const& graph, std::size_t framesPerBlock = 0);

// The same for many frames, or pixels, by the kernels over rows that the modules' companions have;
// what depends on neither frame nor source is evaluated once, and what no output and no log needs
// is left out. The results are those of compile, bit for bit. framesPerBlock 0: as many as keep
// what is read and written in the first-level cache; else a multiple of 16. Where there are no
// kernels over rows at all it is what compile returns. Throws Fault, also when a module's companion
// cannot be loaded.
Plan compileRows(Graph const& graph, std::size_t framesPerBlock = 0);

}  // namespace nodus::host
