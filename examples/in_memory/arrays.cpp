// Evaluates a graph over arrays, without files in between:
//
//     in_memory MODULE GRAPH, as in: in_memory lib/libnodusmath.so examples/in_memory/spin.json
//
// A million rows of records go in where they lie, vectors come out side by side.
#include "nodus/host/arrays.h"
#include "nodus/host/catalogue.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/module.h"

#include <cstdio>
#include <exception>
#include <vector>

using namespace nodus::host;

namespace {

struct Sample {
    double time;
    float angle, radius;
};
struct Vector {
    float x, y, z;
};

void evaluate(char const* modulePath, char const* graphPath)
{
    Module const module(modulePath);
    Module const* const modules[] = {&module};
    Catalogue const catalogue(modules);
    Diagnostics faults;
    Graph const graph = readGraph(graphPath, catalogue, anyColumns(), faults);
    faults.throwIfAny();
    ArrayEvaluator const evaluator(graph);  // once; it may evaluate any number of times

    std::vector<Sample> samples(1'000'000);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = {0.001 * static_cast<double>(i), 1e-5f * static_cast<float>(i), 2};
    std::vector<Vector> places(samples.size());

    InputArray const in[] = {
        {"angle", TypeId::Float, &samples[0].angle, sizeof(Sample)},
        {"radius", TypeId::Float, &samples[0].radius, sizeof(Sample)},
    };
    OutputArray const out[] = {{"placed.result", TypeId::Float3, places.data(), sizeof(Vector)}};
    evaluator.evaluate(samples.size(), in, out, {.threads = 2});

    for (std::size_t const row : {std::size_t{0}, samples.size() / 2, samples.size() - 1}) {
        auto const [x, y, z] = places[row];
        std::printf("%zu: %.3f %.3f %.3f\n", row, double{x}, double{y}, double{z});
    }
}

}  // namespace

int main(int count, char** arguments)
{
    if (count != 3) {
        std::fprintf(stderr, "usage: in_memory MODULE GRAPH\n");
        return 2;
    }
    try {
        evaluate(arguments[1], arguments[2]);
    } catch (std::exception const& fault) {
        std::fprintf(stderr, "in_memory: %s\n", fault.what());
        return 1;
    }
}
