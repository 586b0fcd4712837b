// Times the evaluator: what a node costs beyond its kernel, how far two threads carry, and where
// the time of a whole run over a table goes.
//
// usage: nodusmath_evaluator MODULE NODUS GRAPH TABLE [Google Benchmark's options]
// NODUS is the command, GRAPH a graph over the columns of TABLE.
#include "graphs.h"

#include <benchmark/benchmark.h>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace nodus::bench;

namespace {

constexpr std::size_t kGraphSizes[] = {10, 1000, 100000};

template <void (GraphThread::*work)()>
void run(benchmark::State& state, GraphSubject const& subject)
{
    GraphThread thread(subject);
    (thread.*work)();
    for (auto _ : state)
        (thread.*work)();
    state.counters["calls"] = static_cast<double>(subject.calls());
    state.counters["frames"] = static_cast<double>(subject.framesPerBlock());
}

void registerGraph(char const* module, std::size_t nodes)
{
    auto const subject = std::make_shared<GraphSubject>(module, nodes);
    std::string const name = "evaluator/" + std::to_string(nodes) + "/";
    benchmark::RegisterBenchmark((name + "kernels").c_str(), [=](benchmark::State& state) {
        run<&GraphThread::callKernels>(state, *subject);
    });
    benchmark::RegisterBenchmark((name + "graph").c_str(), [=](benchmark::State& state) {
        run<&GraphThread::evaluate>(state, *subject);
    });
    benchmark::RegisterBenchmark(
        (name + "threads").c_str(),
        [=](benchmark::State& state) { run<&GraphThread::evaluate>(state, *subject); })
        ->UseRealTime()
        ->Threads(1)
        ->Threads(2);
}

struct NamedStage {
    char const* name;
    TableSubject::Stage stage;
};
constexpr NamedStage kStages[] = {{"read", TableSubject::Stage::read},
                                  {"parse", TableSubject::Stage::parse},
                                  {"evaluate", TableSubject::Stage::evaluate},
                                  {"format", TableSubject::Stage::format},
                                  {"write", TableSubject::Stage::write}};

void registerStages(std::shared_ptr<TableSubject> const& subject, std::string const& results)
{
    for (NamedStage const& stage : kStages)
        benchmark::RegisterBenchmark((std::string("table/") + stage.name).c_str(),
                                     [=](benchmark::State& state) {
                                         for (auto _ : state)
                                             subject->runTo(stage.stage, results.c_str());
                                         state.counters["calls"] = 1;
                                         state.counters["bytes"] =
                                             static_cast<double>(subject->tableBytes());
                                     })
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
}

// The command as a user calls it. Returns its largest memory, in bytes.
double runCommand(std::vector<std::string> arguments)
{
    std::vector<char*> words;
    for (std::string& argument : arguments)
        words.push_back(argument.data());
    words.push_back(nullptr);
    pid_t child = 0;
    int status = 0;
    rusage usage{};
    if (posix_spawn(&child, words[0], nullptr, nullptr, words.data(), environ) != 0 ||
        wait4(child, &status, 0, &usage) != child || status != 0)
        throw std::runtime_error(arguments[0] + " eval failed");
    return 1024.0 * static_cast<double>(usage.ru_maxrss);
}

void registerCommand(std::vector<std::string> const& command, std::size_t threads, double bytes)
{
    std::string const count = std::to_string(threads);
    benchmark::RegisterBenchmark(("table/command " + count).c_str(),
                                 [=](benchmark::State& state) {
                                     std::vector<std::string> arguments = command;
                                     arguments.insert(arguments.end(), {"--threads", count});
                                     double memory = 0;
                                     for (auto _ : state)
                                         memory = std::max(memory, runCommand(arguments));
                                     state.counters["calls"] = 1;
                                     state.counters["bytes"] = bytes;
                                     state.counters["memory"] = memory;
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

int runAll(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (argc != 5) {
        std::fprintf(stderr,
                     "usage: nodusmath_evaluator MODULE NODUS GRAPH TABLE [--benchmark_...]\n");
        return 2;
    }
    for (std::size_t const nodes : kGraphSizes)
        registerGraph(argv[1], nodes);
    std::string const results = std::string(argv[4]) + ".results.csv";
    auto const table = std::make_shared<TableSubject>(argv[1], argv[3], argv[4]);
    registerStages(table, results);
    for (std::size_t const threads : {1, 2})
        registerCommand({argv[2], "eval", argv[3], "--data", argv[4], "--out", results}, threads,
                        static_cast<double>(table->tableBytes()));
    benchmark::RunSpecifiedBenchmarks();
    std::remove(results.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv)
try {
    return runAll(argc, argv);
} catch (std::exception const& error) {
    std::fprintf(stderr, "nodusmath_evaluator: %s\n", error.what());
    return 1;
}
