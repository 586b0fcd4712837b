// Times the stages of a run over a table, done by one thread without a pipeline: each with all the
// stages before it.
//
// usage: bench_table MODULE GRAPH TABLE [Google Benchmark's options]
#include "cases.h"
#include "measure.h"

#include "nodus/host/output_file.h"
#include "nodus/host/result_writer.h"
#include "nodus/host/table.h"

#include <cstdio>

using namespace nodus::bench;
using namespace nodus::host;

namespace {

enum class Stage { read, parse, evaluate, format, write };
constexpr std::pair<char const*, Stage> kStages[] = {{"read", Stage::read},
                                                     {"parse", Stage::parse},
                                                     {"evaluate", Stage::evaluate},
                                                     {"format", Stage::format},
                                                     {"write", Stage::write}};

Plan planOf(Catalogue const& catalogue, char const* graph, std::string const& table)
{
    TableReader const reader(table);
    Diagnostics faults;
    Graph const checked = readGraph(graph, catalogue, {table, &reader.columns()}, faults);
    faults.throwIfAny();
    return compile(checked);
}

void runTo(Stage stage, Plan const& plan, std::string const& table, std::string const& results)
{
    TableReader reader(table);
    TableParser const parser(reader, plan);
    ResultWriter const writer(plan, ResultFormat::csv);
    Evaluator evaluator(plan, nullptr);
    OutputFile file = OutputFile::open(results);
    Diagnostics faults;
    TableRows rows;
    TextBuffer text;
    std::vector<std::int32_t> frames;
    std::int32_t frame = 0;
    do {
        rows.clear();
        text.clear();
        frames.clear();
        while (frames.size() < plan.framesPerBlock && reader.readRow(rows))
            frames.push_back(frame++);
        for (std::size_t i = 0; i < frames.size() && stage >= Stage::parse; ++i)
            parser.parse(rows.row(i), rows.rows[i].line, evaluator, i, faults);
        if (stage >= Stage::evaluate)
            evaluator.evaluate(frames);
        for (std::size_t i = 0; i < frames.size() && stage >= Stage::format; ++i)
            writer.append(evaluator, i, frames[i], text);
        if (stage >= Stage::write)
            file.write(text.view());
    } while (!frames.empty());
    faults.throwIfAny();
    file.commit();
}

}  // namespace

void nodus::bench::benchmarks(Arguments const& arguments)
{
    Loaded const loaded(arguments.at(0));
    std::string const table = arguments.at(2), results = table + ".stages.csv";
    Plan const plan = planOf(loaded.catalogue, arguments.at(1), table);
    for (auto const& [name, stage] : kStages)
        add(std::string("table/until/") + name,
            {[&, stage = stage] { runTo(stage, plan, table, results); }},
            {.beside = "table/until/write", .onTheWall = true});
    measure();
    std::remove(results.c_str());
}
