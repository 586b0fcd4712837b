// Turns measurements into tables of ratios.
//
// usage: nodusmath_report [--text | --markdown | --json | --svg] FILE...
#include "results.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string_view>

using namespace nodus::bench;

namespace {

template <typename... Values> std::string formatted(char const* format, Values... values)
{
    char text[256];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

std::string distanceOf(PeerResult const& peer)
{
    if (!peer.sameValues)
        return "other values";
    if (peer.distance == 0)
        return "equal";
    if (peer.distance >= 1e99)
        return "another computation: NaN in one of them";
    return formatted(comparable(peer) ? "%.1e, %.0f ulp" : "another computation: %.1e, %.0f ulp",
                     peer.distance, peer.ulps);
}

// One line of means: each kernel over an empty call; its fastest peer over it.
struct Means {
    Ratios overEmpty, bestPeer;
    std::size_t kernels, compared;
};

Means meansOf(Results const& results)
{
    Means means{{}, {}, results.kernels.size(), 0};
    for (std::size_t way = 0; way < kWayNames.size(); ++way) {
        std::vector<double> overEmpty, bestPeer;
        for (KernelResult const& kernel : results.kernels) {
            overEmpty.push_back(kernel.overEmpty[way]);
            double best = 0;
            for (PeerResult const& peer : kernel.peers)
                if (comparable(peer) && (best == 0 || peer.overKernel[way] < best))
                    best = peer.overKernel[way];
            if (best != 0)
                bestPeer.push_back(best);
        }
        means.overEmpty[way] = geometricMean(overEmpty);
        means.bestPeer[way] = geometricMean(bestPeer);
        means.compared = bestPeer.size();
    }
    return means;
}

// A table of a name, three ratios and a remark.
class Table {
public:
    virtual ~Table() = default;
    virtual void head(std::string const& name, std::string const& remark) = 0;
    virtual void row(std::string const& name, Ratios const& ratios, std::string const& remark) = 0;
    virtual void line(std::string const& text) = 0;
};

class TextTable : public Table {
public:
    void head(std::string const& name, std::string const& remark) override
    {
        std::printf("\n%-74s", name.c_str());
        for (WayName const& way : kWayNames)
            std::printf(" %13s", way.title);
        std::printf("  %s\n", remark.c_str());
    }
    void row(std::string const& name, Ratios const& ratios, std::string const& remark) override
    {
        std::printf("%-74s", name.c_str());
        for (double const ratio : ratios)
            std::printf(" %13.2f", ratio);
        std::printf("  %s\n", remark.c_str());
    }
    void line(std::string const& text) override { std::printf("%s\n", text.c_str()); }
};

class MarkdownTable : public Table {
public:
    void head(std::string const& name, std::string const& remark) override
    {
        std::printf("\n| %s |", name.c_str());
        for (WayName const& way : kWayNames)
            std::printf(" %s |", way.title);
        std::printf(" %s |\n|---|---:|---:|---:|---|\n", remark.c_str());
    }
    void row(std::string const& name, Ratios const& ratios, std::string const& remark) override
    {
        std::printf("| %s |", name.c_str());
        for (double const ratio : ratios)
            std::printf(" %.2f |", ratio);
        std::printf(" %s |\n", remark.c_str());
    }
    void line(std::string const& text) override { std::printf("\n%s\n", text.c_str()); }
};

std::string described(TableResult const& table)
{
    std::string text = "A table of a million rows through ten nodes: ";
    for (TableResult::Stage const& stage : table.stages)
        text += formatted("%s %.0f %%, ", stage.name.c_str(), 100 * stage.share);
    return text +
           formatted("of one thread's work. The command takes %.0f MB of table a second with "
                     "one thread, %.0f with two, and %.0f MB of memory.",
                     table.megabytes[0], table.megabytes[1], table.memory);
}

void print(Results const& results, Table& table)
{
    Means const means = meansOf(results);
    table.head("peer over kernel (above 1: the kernel is faster)", "distance from our result");
    for (KernelResult const& kernel : results.kernels)
        for (PeerResult const& peer : kernel.peers)
            table.row(kernel.name + ": " + peer.library, peer.overKernel, distanceOf(peer));
    if (means.compared != 0)
        table.row(formatted("fastest comparable peer of each of %zu kernels, geometric mean",
                            means.compared),
                  means.bestPeer, "");

    table.head("kernel over an empty call of its shape", "");
    for (KernelResult const& kernel : results.kernels)
        table.row(kernel.name, kernel.overEmpty, "");
    if (means.kernels != 0)
        table.row(formatted("all %zu, geometric mean", means.kernels), means.overEmpty, "");

    if (results.loading)
        table.line(formatted("Loading and unloading takes %.2f times as long as an empty library "
                             "with the same needs: %d relative relocations, %d by name.",
                             results.loading->overEmpty, results.loading->relativeRelocations,
                             results.loading->symbolicRelocations));
    for (GraphResult const& graph : results.graphs)
        table.line(formatted("A graph of %zu nodes takes %.2f times as long as its kernels alone: "
                             "%.1f ns a node beyond them. Two threads evaluate %.2f times as many "
                             "frames as one.",
                             graph.nodes, graph.overKernels, graph.beyondKernels,
                             graph.withTwoThreads));
    if (results.table)
        table.line(described(*results.table));
}

nlohmann::json asJson(Results const& results)
{
    using nlohmann::json;
    auto const named = [](Ratios const& ratios) {
        json object;
        for (std::size_t way = 0; way < ratios.size(); ++way)
            object[kWayNames[way].key] = ratios[way];
        return object;
    };
    json all = {{"kernels", json::array()}};
    for (KernelResult const& kernel : results.kernels) {
        json peers = json::array();
        for (PeerResult const& peer : kernel.peers) {
            json one = {{"library", peer.library}, {"over_kernel", named(peer.overKernel)}};
            if (peer.sameValues)
                one.update({{"distance", peer.distance}, {"ulps", peer.ulps}});
            peers.push_back(one);
        }
        all["kernels"].push_back(
            {{"name", kernel.name}, {"over_empty", named(kernel.overEmpty)}, {"peers", peers}});
    }
    if (results.loading)
        all["loading"] = {{"over_empty", results.loading->overEmpty},
                          {"relative_relocations", results.loading->relativeRelocations},
                          {"symbolic_relocations", results.loading->symbolicRelocations}};
    for (GraphResult const& graph : results.graphs)
        all["graphs"].push_back({{"nodes", graph.nodes},
                                 {"over_kernels", graph.overKernels},
                                 {"nanoseconds_beyond_kernels", graph.beyondKernels},
                                 {"with_two_threads", graph.withTwoThreads}});
    if (results.table) {
        json shares;
        for (TableResult::Stage const& stage : results.table->stages)
            shares[stage.name] = stage.share;
        all["table"] = {{"shares", shares},
                        {"megabytes_a_second", results.table->megabytes},
                        {"memory_megabytes", results.table->memory}};
    }
    return all;
}

int run(std::vector<std::string> arguments)
{
    std::string mode = "--text";
    if (!arguments.empty() && arguments.front().starts_with("--")) {
        mode = arguments.front();
        arguments.erase(arguments.begin());
    }
    bool const known =
        mode == "--text" || mode == "--markdown" || mode == "--json" || mode == "--svg";
    if (!known || arguments.empty()) {
        std::cerr << "usage: nodusmath_report [--text | --markdown | --json | --svg] FILE...\n";
        return 2;
    }
    Results const results = readResults(arguments);
    TextTable text;
    MarkdownTable markdown;
    if (mode == "--json")
        std::cout << asJson(results).dump(2) << '\n';
    else if (mode == "--svg")
        std::cout << drawn(results);
    else
        print(results, mode == "--text" ? static_cast<Table&>(text) : markdown);
    return 0;
}

}  // namespace

int main(int argc, char** argv)
try {
    return run({argv + 1, argv + argc});
} catch (std::exception const& error) {
    std::cerr << "nodusmath_report: " << error.what() << '\n';
    return 1;
}
