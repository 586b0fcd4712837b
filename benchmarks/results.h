// Measurements as ratios: a kernel over an empty call of its shape, a peer over the kernel. Times
// themselves are of one machine and one moment and are not passed on.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace nodus::bench {

struct WayName {
    char const *key, *title;
};
inline constexpr std::array<WayName, 3> kWayNames = {{
    {"back_to_back", "back to back"},
    {"latency", "latency"},
    {"fresh_ports", "fresh ports"},
}};
using Ratios = std::array<double, kWayNames.size()>;

// Results further apart than this are another computation.
inline constexpr double kSameResult = 1e-3;

struct PeerResult {
    std::string library;
    Ratios overKernel;
    bool sameValues;        // false: other values are promised, only the work is the same
    double distance, ulps;  // from the kernel's results
};

struct KernelResult {
    std::string name;
    Ratios overEmpty;
    std::vector<PeerResult> peers;
};

struct Loading {
    double overEmpty;
    int relativeRelocations, symbolicRelocations;
};

// A graph of so many nodes.
struct GraphResult {
    std::size_t nodes;
    double overKernels;     // evaluating it, over calling its kernels and nothing else
    double beyondKernels;   // the difference, in nanoseconds a node
    double withTwoThreads;  // how many times more frames in the same time
};

// A whole run over a table.
struct TableResult {
    struct Stage {
        std::string name;
        double share;
    };
    std::vector<Stage> stages;  // of one thread's work without a pipeline
    double megabytes[2];        // of table, a second, by the command with one and with two threads
    double memory;              // in megabytes, the larger of both
};

struct Results {
    std::vector<KernelResult> kernels;  // in the order in which they were measured
    std::optional<Loading> loading;
    std::vector<GraphResult> graphs;
    std::optional<TableResult> table;
};

inline bool comparable(PeerResult const& peer)
{
    return peer.sameValues && peer.distance <= kSameResult;
}

// From files that Google Benchmark wrote; of repetitions the fastest counts, since what disturbs a
// measurement makes it slower. Throws std::runtime_error when something is missing.
Results readResults(std::vector<std::string> const& files);

// The mean of ratios.
double geometricMean(std::vector<double> const& ratios);

// Peers beside kernels as a picture, an SVG file.
std::string drawn(Results const& results);

}  // namespace nodus::bench
