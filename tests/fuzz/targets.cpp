// The readers of the host, and what comes after them when they are content.
#include "targets.h"

#include "nodus/host/catalogue.h"
#include "nodus/host/evaluator.h"
#include "nodus/host/graph.h"
#include "nodus/host/plan.h"
#include "nodus/host/result_writer.h"
#include "nodus/host/table.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

using namespace nodus::host;

namespace {

void require(bool isTrue, char const* promise)
{
    if (isTrue)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

void requireLines(std::vector<std::string> const& lines)
{
    for (std::string const& line : lines)
        require(!line.empty(), "a fault has words");
}

Module const& module()
{
    static Module const loaded(NODUS_TEST_MODULE);
    return loaded;
}

Catalogue const& builtCatalogue()
{
    static Module const* const modules[] = {&module()};
    static Catalogue const read{modules};
    return read;
}

void evaluateSome(Graph const& built)
{
    Plan const plan = compile(built);
    Evaluator evaluator(plan, nullptr);
    std::int32_t const frames[] = {0, 1};
    auto const some = std::span(frames).first(std::min(std::size(frames), plan.framesPerBlock));
    evaluator.evaluate(some);
    ResultWriter const writer(plan, ResultFormat::jsonLines);
    TextBuffer text;
    writer.append(evaluator, 0, 0, text);
    require(text.view().ends_with("}\n"), "a result is a line");
}

// The bytes as a file that readers can open.
std::string fileOf(std::string_view bytes)
{
    static int const file = ::memfd_create("table", MFD_CLOEXEC);
    require(::ftruncate(file, 0) == 0 &&
                ::pwrite(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()),
            "there is memory for a file");
    return "/proc/self/fd/" + std::to_string(file);
}

// A node for each of the first columns, of all types that a column can have.
Graph takerOf(std::size_t columns)
{
    constexpr char const* kTypes[] = {"Abs_Float", "Abs_Int32", "Equal_Bool", "Abs_Double",
                                      "Abs_UInt8"};
    Graph taker;
    for (std::size_t i = 0; i < std::min(columns, std::size_t{10}); ++i) {
        NodeType const* const type = builtCatalogue().find(kTypes[i % std::size(kTypes)]);
        require(type != nullptr, "the node type is there");
        GraphNode& node = taker.nodes.emplace_back(makeNode(std::to_string(i), *type));
        node.feeds.push_back({0, type->inputs.front().type, {Source::Kind::column, i}});
        taker.outputs.push_back({node.name, i, 0, type->outputs.front().type});
        taker.order.push_back(i);
    }
    return taker;
}

}  // namespace

void fuzz::graph(std::string_view bytes)
{
    static std::vector<std::string> const columns = {"x", "y", "drive"};
    Diagnostics diagnostics;
    Graph const read =
        parseGraph(bytes, "graph.json", builtCatalogue(), {"t.csv", &columns, true}, diagnostics);
    requireLines(diagnostics.lines());
    if (diagnostics.empty()) {
        require(read.order.size() == read.nodes.size(), "every node has its turn");
        evaluateSome(read);
    }
}

void fuzz::table(std::string_view bytes)
{
    std::string const path = fileOf(bytes);
    Diagnostics diagnostics;
    diagnostics.gather([&] {
        TableReader reader(path), counter(path);
        Graph const taker = takerOf(reader.columns().size());
        Plan const plan = compile(taker, 1);
        TableParser const parser(reader, plan);
        Evaluator evaluator(plan, nullptr);
        TableRows rows;
        while (reader.readRow(rows)) {
            parser.parse(rows.row(0), rows.rows[0].line, evaluator, 0, diagnostics);
            require(counter.skipRow(), "a row is there to be passed over");
            rows.clear();
        }
        require(!counter.skipRow(), "there are no more rows to pass over");
    });
    requireLines(diagnostics.lines());
}

void fuzz::catalogue(std::string_view bytes)
{
    Diagnostics diagnostics;
    Catalogue const read(module(), bytes, "catalogue.json", diagnostics);
    requireLines(diagnostics.lines());
    for (NodeType const& type : read.nodeTypes())
        if (type.isCallable()) {
            require(read.find(type.name) == &type, "a node type is found by its name");
            require(makeNode("n", type).constants.size() == type.inputExtent,
                    "a node has a block for its inputs");
        }
}
