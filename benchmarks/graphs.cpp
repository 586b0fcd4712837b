// The host's side of measuring the evaluator.
#include "graphs.h"

#include "nodus/host/catalogue.h"
#include "nodus/host/evaluator.h"
#include "nodus/host/graph.h"
#include "nodus/host/module.h"
#include "nodus/host/output_file.h"
#include "nodus/host/plan.h"
#include "nodus/host/result_writer.h"
#include "nodus/host/table.h"

#include <filesystem>
#include <map>
#include <numeric>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::bench {

namespace {

using namespace nodus::host;

constexpr std::string_view kTypes[] = {
    "Add_Float",        "Mul_Float",           "Add_Float3",  "MultiplyByScalar_Float3",
    "Normalize_Float3", "DotProduct_Float3",   "Clamp_Float", "AxisAndAngleToQuaternion_Float3",
    "Mul_Quat",         "RotateVector_Float3", "Sub_Float",   "SmoothStep_Float",
};

// Each input comes from one of the last few nodes that have its type; where there is none, it keeps
// its standard value.
Graph rig(Catalogue const& catalogue, std::size_t nodes)
{
    constexpr std::size_t kNear = 8;
    std::minstd_rand random(1);
    std::map<ValueType const*, std::vector<std::size_t>> byOutput;
    Graph graph;
    graph.nodes.reserve(nodes);
    for (std::size_t index = 0; index < nodes; ++index) {
        NodeType const* const type = catalogue.find(kTypes[index % std::size(kTypes)]);
        if (type == nullptr)
            throw std::runtime_error("the module lacks a node type of the measured graph");
        GraphNode& node = graph.nodes.emplace_back(makeNode(std::to_string(index), *type));
        for (Port const& port : type->inputs) {
            auto const& known = byOutput[port.type];
            if (known.empty())
                continue;
            std::size_t const back = random() % std::min(known.size(), kNear);
            node.feeds.push_back(
                {port.offset, port.type, {Source::Kind::node, known[known.size() - 1 - back], 0}});
        }
        byOutput[type->outputs.front().type].push_back(index);
    }
    graph.order.resize(nodes);
    std::iota(graph.order.begin(), graph.order.end(), std::size_t{0});
    graph.outputs.push_back(
        {"last.result", nodes - 1, 0, graph.nodes.back().type->outputs[0].type});
    return graph;
}

struct Loaded {
    explicit Loaded(char const* path)
        : module(path), modules{&module}, catalogue(std::span<Module const* const>(modules))
    {
    }
    Module module;
    Module const* modules[1];
    Catalogue catalogue;
};

// A module can be loaded once in a process: all subjects share the first.
Catalogue const& catalogueOf(char const* module)
{
    static Loaded const loaded(module);
    return loaded.catalogue;
}

}  // namespace

struct GraphSubject::Parts {
    Parts(char const* module, std::size_t nodes) : plan(compile(rig(catalogueOf(module), nodes))) {}
    Plan plan;
};

GraphSubject::GraphSubject(char const* module, std::size_t nodes)
    : m_parts(std::make_unique<Parts>(module, nodes))
{
}
GraphSubject::~GraphSubject() = default;

std::size_t GraphSubject::calls() const
{
    return m_parts->plan.steps.size() * m_parts->plan.framesPerBlock;
}
std::size_t GraphSubject::framesPerBlock() const { return m_parts->plan.framesPerBlock; }

struct GraphThread::Parts {
    struct Call {
        Solve solve;
        std::byte const* in;
        std::byte* out;
        std::size_t inStride, outStride;
    };

    explicit Parts(Plan const& plan) : evaluator(plan, nullptr), frames(plan.framesPerBlock)
    {
        std::iota(frames.begin(), frames.end(), 0);
        for (Step const& step : plan.steps)
            calls.push_back({step.solve, evaluator.at(step.in, 0), evaluator.at(step.out, 0),
                             step.in.stride, step.out.stride});
    }
    Evaluator evaluator;
    std::vector<std::int32_t> frames;
    std::vector<Call> calls;
};

GraphThread::GraphThread(GraphSubject const& subject)
    : m_parts(std::make_unique<Parts>(subject.parts().plan))
{
}
GraphThread::~GraphThread() = default;

void GraphThread::evaluate() { m_parts->evaluator.evaluate(m_parts->frames); }

void GraphThread::callKernels()
{
    std::size_t const frames = m_parts->frames.size();
    for (Parts::Call const& call : m_parts->calls) {
        std::byte const* in = call.in;
        std::byte* out = call.out;
        for (std::size_t i = 0; i < frames; ++i) {
            call.solve(in, out);
            in += call.inStride;
            out += call.outStride;
        }
    }
}

struct TableSubject::Parts {
    Parts(char const* module, char const* graphPath, char const* table)
        : path(table), bytes(std::filesystem::file_size(path))
    {
        TableReader const reader(path);
        Diagnostics faults;
        Graph const graph =
            readGraph(graphPath, catalogueOf(module), {path, &reader.columns(), false}, faults);
        faults.throwIfAny();
        plan = compile(graph);
    }
    std::string path;
    std::size_t bytes;
    Plan plan;
};

TableSubject::TableSubject(char const* module, char const* graph, char const* table)
    : m_parts(std::make_unique<Parts>(module, graph, table))
{
}
TableSubject::~TableSubject() = default;

std::size_t TableSubject::tableBytes() const { return m_parts->bytes; }

void TableSubject::runTo(Stage stage, char const* results) const
{
    Plan const& plan = m_parts->plan;
    TableReader reader(m_parts->path);
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

}  // namespace nodus::bench
