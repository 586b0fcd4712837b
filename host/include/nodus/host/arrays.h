// Evaluating a graph in memory: from a caller's arrays to a caller's arrays, a frame a row.
//
//     Diagnostics faults;
//     Graph const graph = readGraph("spin.json", catalogue, anyColumns(), faults);
//     faults.throwIfAny();
//     ArrayEvaluator const spin(graph);
//     InputArray const in[] = {{"angle", TypeId::Float, angles.data(), sizeof(float)}};
//     OutputArray const out[] = {{"placed.result", TypeId::Float3, places.data(), sizeof(Float3)}};
//     spin.evaluate(angles.size(), in, out, {.threads = 2});
#pragma once

#include "nodus/host/graph.h"
#include "nodus/host/plan.h"
#include "nodus/host/text_buffer.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace nodus::host {

// For readGraph: what columns there are is up to who evaluates.
inline GraphSurroundings anyColumns() { return {"", nullptr, false, true}; }

// A value a row, at first + row * stride; the values of a type lie as the type's port has them
// (three floats for a Float3), at any address; a text is a nodus::String. Arrays whose values lie
// as their type is aligned are read and written in place, all others by way of copies.
struct InputArray {
    std::string column;  // as the graph's {"column": "name"}
    TypeId type;         // of the input that takes it: columns are not converted
    void const* first;
    std::ptrdiff_t stride;  // 0: the same value in every row
};
struct OutputArray {
    std::string output;  // as the graph lists it: "placed.result", "placed.result.x"
    TypeId type;
    void* first;
    std::ptrdiff_t stride;
};

struct ArrayOptions {
    std::int32_t firstFrame = 0;  // row i is frame firstFrame + i
    std::size_t threads = 1;      // no result depends on it; 1 is the caller's own
    // An Int32 a row instead, aligned; with a stride of 0 all rows are one frame.
    void const* frames = nullptr;
    std::ptrdiff_t framesStride = 0;
    std::size_t imageWidth = 0;  // of pixels as sources: row i is pixel (i % width, i / width)
    // Gets the lines of logging nodes, "frame 12: text", in the order of the rows.
    TextBuffer* log = nullptr;
    // For who watches from another thread: counts the rows that are done, and ends the evaluation
    // soon when it is set. Rows that were not evaluated are as they were.
    std::atomic<std::size_t>* done = nullptr;
    std::atomic<bool> const* stop = nullptr;
};

// Immutable: any number of threads may evaluate at once, into arrays of their own. The catalogue
// outlives it, the graph need not.
class ArrayEvaluator {
public:
    // Throws Fault when the graph is too large.
    explicit ArrayEvaluator(Graph const& graph);

    // Evaluates that many rows. Every column of the graph wants an array, outputs only those that
    // are of interest. No array of results may overlap any other array.
    // Throws Fault with a line for each array that is missing or of another type, for an output
    // that the graph does not list, for pixels without an image and for frames beyond Int32;
    // nothing is written then.
    void evaluate(std::size_t rows, std::span<InputArray const> inputs,
                  std::span<OutputArray const> outputs, ArrayOptions const& options = {}) const;

private:
    Plan m_plan;
    std::vector<std::string> m_columns;
};

}  // namespace nodus::host
