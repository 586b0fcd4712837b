// Reads Google Benchmark's files.
#include "results.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string_view>

namespace nodus::bench {

using nlohmann::json;

namespace {

struct Measured {
    double time;  // of the processor, a call
    double wait;  // of the clock on the wall, the whole
    json run;
};

// By name, and the names in the order of their first appearance.
struct AllMeasured {
    std::map<std::string, Measured> byName;
    std::vector<std::string> names;

    void add(json const& run)
    {
        std::string const name = run.at("name");
        double const time = run.at("cpu_time").get<double>() / run.at("calls").get<double>();
        double const wait = run.at("real_time");
        auto const [found, isNew] = byName.try_emplace(name, Measured{time, wait, run});
        if (isNew)
            names.push_back(name);
        found->second.time = std::min(found->second.time, time);
        found->second.wait = std::min(found->second.wait, wait);
    }

    Measured const& at(std::string const& name) const
    {
        auto const found = byName.find(name);
        if (found == byName.end())
            throw std::runtime_error("the results have no measurement of " + name);
        return found->second;
    }
};

// Google Benchmark writes NaN, which is no JSON, where a deviation is divided by a mean of 0.
std::string withoutNaN(std::string text)
{
    constexpr std::string_view kNaN = ": NaN", kNull = ": null";
    for (std::size_t at = 0; (at = text.find(kNaN, at)) != std::string::npos; at += kNull.size())
        text.replace(at, kNaN.size(), kNull);
    return text;
}

AllMeasured measuredIn(std::vector<std::string> const& files)
{
    std::vector<json> runs;
    for (std::string const& name : files) {
        std::ifstream file(name);
        if (!file)
            throw std::runtime_error("cannot read " + name);
        json const all = json::parse(withoutNaN({std::istreambuf_iterator<char>(file), {}}));
        for (json const& run : all.at("benchmarks"))
            if (run.at("run_type") == "iteration")
                runs.push_back(run);
    }
    // Repetitions may have been shuffled: the order is that of registration.
    std::stable_sort(runs.begin(), runs.end(), [](json const& a, json const& b) {
        return a.at("family_index").get<int>() < b.at("family_index").get<int>();
    });
    AllMeasured all;
    for (json const& run : runs)
        all.add(run);
    return all;
}

Ratios ratiosOf(AllMeasured const& all, std::string const& name, std::string const& reference)
{
    Ratios ratios{};
    for (std::size_t way = 0; way < ratios.size(); ++way) {
        std::string const suffix = std::string("/") + kWayNames[way].key;
        ratios[way] = all.at(name + suffix).time / all.at(reference + suffix).time;
    }
    return ratios;
}

std::vector<GraphResult> graphsIn(AllMeasured const& all)
{
    constexpr std::string_view kBefore = "evaluator/", kAfter = "/graph";
    std::vector<GraphResult> graphs;
    for (std::string const& name : all.names) {
        if (!name.starts_with(kBefore) || !name.ends_with(kAfter))
            continue;
        std::string const stem = name.substr(0, name.size() - kAfter.size());
        double const graph = all.at(name).time, kernels = all.at(stem + "/kernels").time;
        std::string const threads = stem + "/threads/real_time/threads:";
        graphs.push_back({std::stoul(stem.substr(kBefore.size())), graph / kernels, graph - kernels,
                          all.at(threads + "1").wait / all.at(threads + "2").wait});
    }
    return graphs;
}

std::optional<TableResult> tableIn(AllMeasured const& all)
{
    constexpr std::string_view kStages[] = {"read", "parse", "evaluate", "format", "write"};
    auto const at = [&](std::string_view what) -> Measured const& {
        return all.at("table/" + std::string(what) + "/real_time");
    };
    if (!all.byName.contains("table/write/real_time"))
        return std::nullopt;
    TableResult table{};
    double before = 0;
    for (std::string_view const stage : kStages) {
        double const until = at(stage).wait;
        table.stages.push_back({std::string(stage), (until - before) / at("write").wait});
        before = until;
    }
    for (int threads = 1; threads <= 2; ++threads) {
        Measured const& command = at("command " + std::to_string(threads));
        double const bytes = command.run.at("bytes"), milliseconds = command.wait;
        table.megabytes[threads - 1] = bytes / milliseconds / 1000;
        table.memory = std::max(table.memory, command.run.at("memory").get<double>() / 1e6);
    }
    return table;
}

}  // namespace

Results readResults(std::vector<std::string> const& files)
{
    AllMeasured const all = measuredIn(files);
    std::string const first = std::string("/") + kWayNames[0].key;
    Results results;
    for (std::string const& full : all.names) {
        if (!full.ends_with(first))
            continue;
        std::string const subject = full.substr(0, full.size() - first.size());
        std::size_t const slash = subject.find('/');
        std::string const who = subject.substr(0, slash), name = subject.substr(slash + 1);
        json const& run = all.at(full).run;
        if (who == "module") {
            std::string const shape = run.at("label");
            results.kernels.push_back({name, ratiosOf(all, subject, "empty/" + shape), {}});
        } else if (who != "empty") {
            // A peer follows its kernel.
            if (results.kernels.empty() || results.kernels.back().name != name)
                throw std::runtime_error(subject + " was measured without its kernel");
            double const distance = run.at("distance"), ulps = run.at("ulps");
            results.kernels.back().peers.push_back(
                {who, ratiosOf(all, subject, "module/" + name), distance >= 0, distance, ulps});
        }
    }
    if (all.byName.contains("loading/module")) {
        json const& run = all.at("loading/module").run;
        results.loading = {all.at("loading/module").time / all.at("loading/empty").time,
                           run.at("relative_relocations"), run.at("symbolic_relocations")};
    }
    results.graphs = graphsIn(all);
    results.table = tableIn(all);
    return results;
}

double geometricMean(std::vector<double> const& ratios)
{
    double logarithms = 0;
    for (double const ratio : ratios)
        logarithms += std::log(ratio);
    return std::exp(logarithms / static_cast<double>(ratios.size()));
}

}  // namespace nodus::bench
