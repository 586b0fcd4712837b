// Graphs and tables for measuring the evaluator. No strings in here: the host library has another
// string ABI than the benchmarks.
#pragma once

#include <cstddef>
#include <memory>

namespace nodus::bench {

// A graph of so many nodes as a rig has them: sums, products, vectors, rotations, most inputs fed
// by nodes shortly before. Immutable. Throws what is derived from std::exception.
class GraphSubject {
public:
    GraphSubject(char const* module, std::size_t nodes);
    ~GraphSubject();
    GraphSubject(GraphSubject const&) = delete;

    // Calls of a kernel for one block of frames.
    std::size_t calls() const;
    std::size_t framesPerBlock() const;

    struct Parts;
    Parts const& parts() const { return *m_parts; }

private:
    std::unique_ptr<Parts> m_parts;
};

// One thread's arena over a graph.
class GraphThread {
public:
    explicit GraphThread(GraphSubject const& subject);
    ~GraphThread();
    GraphThread(GraphThread const&) = delete;

    // The next block of frames, as nodus eval does it.
    void evaluate();
    // The kernels of a block over the same memory and in the same order, and nothing else.
    void callKernels();

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

// A graph over the rows of a table, done by one thread without a pipeline, so that each stage can
// be timed: up to a stage means with all stages before it.
class TableSubject {
public:
    enum class Stage { read, parse, evaluate, format, write };

    // Throws what is derived from std::exception when the files cannot be used.
    TableSubject(char const* module, char const* graph, char const* table);
    ~TableSubject();
    TableSubject(TableSubject const&) = delete;

    std::size_t tableBytes() const;
    // The results of stage write go to that file.
    void runTo(Stage stage, char const* results) const;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

}  // namespace nodus::bench
