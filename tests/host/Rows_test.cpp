// Plans for rows, and arrays in memory: the bits of kernels called one by one, whatever the graph.
#include "fixtures.h"

#include "nodus/String.h"
#include "nodus/host/arrays.h"
#include "nodus/host/run.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

using namespace fixtures;

namespace {

struct Results {
    std::string text, log;

    bool operator==(Results const&) const = default;
};

// Over the rows of a table with the columns "x" and "n".
Results resultsOf(Plan const& plan, std::size_t threads, std::string const& table)
{
    std::string folder = testing::TempDir() + "nodus-XXXXXX";
    std::filesystem::current_path(::mkdtemp(folder.data()));
    std::ofstream("t.csv") << table;
    TableReader reader("t.csv");
    auto results = OutputFile::open("results"), log = OutputFile::open("log");
    RunOptions options;
    options.threads = threads;
    options.table = &reader;
    options.results = &results;
    options.log = &log;
    run(plan, options);
    results.commit();
    log.commit();
    auto const read = [](char const* name) {
        std::ifstream file(name);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    Results made{read("results"), read("log")};
    std::filesystem::remove_all(folder);
    return made;
}

std::string tableOf(std::size_t rows)
{
    std::minstd_rand random(5);
    std::string text = "x,n\n";
    for (std::size_t i = 0; i < rows; ++i)
        text += std::to_string(std::ldexp(static_cast<double>(random() % 2000) - 1000,
                                          static_cast<int>(random() % 20) - 14)) +
                "," + std::to_string(random() % 100) + "\n";
    return text;
}

// Nodes of any type, their inputs from any earlier node, whole or lane by lane, from the frame, a
// column or nowhere.
class RandomGraph {
public:
    RandomGraph(unsigned seed, bool lacksRows) : m_random(seed)
    {
        auto const& types = catalogue().nodeTypes();
        graph.columns = {"x", "n"};
        for (std::size_t index = 0; index < 80; ++index) {
            NodeType const* type = &types[m_random() % types.size()];
            if (lacksRows && m_random() % 4 == 0) {
                m_withoutRows.push_back(*type);
                m_withoutRows.back().module = nullptr;
                type = &m_withoutRows.back();
            }
            GraphNode& node =
                graph.nodes.emplace_back(makeNode("n" + std::to_string(index), *type));
            graph.order.push_back(index);
            for (Port const& port : type->inputs)
                feed(node, *port.type, port.offset);
            for (Port const& port : type->outputs)
                if (m_random() % 5 == 0)
                    graph.outputs.push_back(
                        {node.name + "." + port.name, index, port.offset, port.type});
        }
    }

    Graph graph;

private:
    void feed(GraphNode& node, ValueType const& type, std::size_t offset)
    {
        bool const isScalar = type.isScalar() && type.id != TypeId::String;
        unsigned const choice = m_random() % 8;
        if (!type.isScalar() && choice < 3) {
            for (std::size_t lane = 0; lane < type.laneNames.size(); ++lane)
                feed(node, valueType(type.lane), offset + lane * type.laneSize);
        } else if (type.id == TypeId::Int32 && choice == 3) {
            node.feeds.push_back({offset, &type, {Source::Kind::frame}});
        } else if (isScalar && choice < 5 && type.id != TypeId::Bool) {
            bool const isReal = type.id == TypeId::Float || type.id == TypeId::Double;
            node.feeds.push_back({offset, &type, {Source::Kind::column, isReal ? 0u : 1u}});
        } else if (choice < 7) {
            feedFromNode(node, type, offset);
        } else if (type.id == TypeId::Float) {
            float const constant = static_cast<float>(m_random() % 100) / 8 - 4;
            std::memcpy(node.constants.data() + offset, &constant, sizeof constant);
        } else if (type.id == TypeId::String) {
            setText(node, offset, "text " + std::to_string(m_random() % 10));
        }
    }

    // Some output, or lane of one, that has the type.
    void feedFromNode(GraphNode& node, ValueType const& type, std::size_t offset)
    {
        for (int attempt = 0; attempt < 30; ++attempt) {
            std::size_t const index = m_random() % graph.nodes.size();
            if (index + 1 == graph.nodes.size())
                continue;
            auto const& outputs = graph.nodes[index].type->outputs;
            Port const& port = outputs[m_random() % outputs.size()];
            std::size_t inner = port.offset;
            if (port.type != &type && !port.type->isScalar() && port.type->lane == type.id)
                inner += m_random() % port.type->laneNames.size() * port.type->laneSize;
            else if (port.type != &type)
                continue;
            if (type.id == TypeId::String)
                setText(node, offset, {});
            node.feeds.push_back({offset, &type, {Source::Kind::node, index, inner}});
            return;
        }
    }

    std::minstd_rand m_random;
    std::deque<NodeType> m_withoutRows;
};

constexpr char kArrayGraph[] = R"({"nodes": {
    "v": {"type": "Add_Float3", "inputs": {"a": [{"column": "x"}, {"column": "y"}, 1], "b": [0.5, 2, 3]}},
    "d": {"type": "Mul_Float", "inputs": {"a": {"from": "v.result.y"}, "b": {"column": "x"}}},
    "i": {"type": "Add_Int32", "inputs": {"a": {"frame": true}, "b": {"column": "n"}}},
    "w": {"type": "Add_Float3", "inputs": {"a": {"from": "v"}, "b": {"from": "v"}}},
    "s": {"type": "LogValueString", "inputs": {"value": "text"}}},
    "outputs": ["v", "w.result.z", "d", "i", "s"]})";

}  // namespace

TEST(RowPlan, AnyGraphHasTheBitsOfKernelsCalledOneByOne)
{
    std::string const table = tableOf(1300);
    std::size_t logged = 0, once = 0, composed = 0, withoutRows = 0;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        RandomGraph const random(seed, seed % 3 == 0);
        Results const expected = resultsOf(compile(random.graph, 1), 1, table);
        Plan const plan = compileRows(random.graph);
        ASSERT_FALSE(plan.rowSteps.empty());
        Results const rows = resultsOf(plan, 1, table);
        ASSERT_EQ(rows.text, expected.text) << "seed " << seed;
        ASSERT_TRUE(rows == expected) << "seed " << seed;
        for (Plan const& other :
             {compile(random.graph), compile(random.graph, 7), compileRows(random.graph, 16)})
            ASSERT_TRUE(resultsOf(other, 3, table) == expected) << "seed " << seed;
        logged += expected.log.size();
        once += plan.onceCount;
        composed += plan.moves.size();
        withoutRows += plan.steps.size();
    }
    EXPECT_TRUE(logged > 0 && once > 0 && composed > 0 && withoutRows > 0);
}

// What nobody needs is not evaluated, what never changes once, and bytes are used again.
TEST(RowPlan, EvaluatesNoMoreThanIsNeeded)
{
    Plan const plan = compileRows(graphOf(R"({"nodes": {
        "unused": {"type": "Sin_Float", "inputs": {"value": 2}},
        "fixed":  {"type": "Sqrt_Float", "inputs": {"value": 2}},
        "logged": {"type": "LogValueFloat", "inputs": {"value": 2}},
        "f": {"type": "Add_Int32", "inputs": {"a": {"frame": true}}},
        "g": {"type": "Add_Int32", "inputs": {"a": {"from": "f"}}},
        "h": {"type": "Add_Int32", "inputs": {"a": {"from": "g"}}},
        "i": {"type": "Add_Int32", "inputs": {"a": {"from": "h"}}},
        "both": {"type": "Add_Float", "inputs": {"a": {"from": "fixed"}, "b": 1}}},
        "outputs": ["i", "both"]})"));
    EXPECT_EQ(plan.onceCount, 2u);
    ASSERT_EQ(plan.rowSteps.size(), 7u);
    auto const outputOf = [&](std::size_t step) {
        RowStep const& row = plan.rowSteps[step];
        return plan.ports[row.firstPort + row.inputCount].offset;
    };
    EXPECT_EQ(outputOf(3), outputOf(5)) << "f is read no more when h is written";
    EXPECT_NE(outputOf(3), outputOf(4));
}

TEST(Arrays, AreReadAndWrittenWhereverTheyLie)
{
    constexpr std::size_t kRows = 5000;
    ArrayEvaluator const evaluator(graphOf(kArrayGraph, anyColumns()));
    struct Record {
        char head;
        float x, y;
        std::int32_t n;
    };
    std::vector<Record> records(kRows);
    for (std::size_t i = 0; i < kRows; ++i)
        records[i] = {0, static_cast<float>(i) * 0.25f, -static_cast<float>(i),
                      static_cast<int>(i)};
    float const same = 7;
    // Beside each other, within records, at odd addresses.
    std::vector<float> products(kRows, -1);
    std::vector<char> odd(kRows * 13 + 1);
    std::vector<std::array<std::int32_t, 3>> sums(kRows);
    std::vector<float> doubled(kRows);
    for (std::size_t const threads : {1u, 2u, 7u}) {
        InputArray const in[] = {{"x", TypeId::Float, &records[0].x, sizeof(Record)},
                                 {"y", TypeId::Float, &same, 0},
                                 {"n", TypeId::Int32, &records[0].n, sizeof(Record)},
                                 {"more than is needed", TypeId::Bool, nullptr, 0}};
        OutputArray const out[] = {{"d.result", TypeId::Float, products.data(), sizeof(float)},
                                   {"v.result", TypeId::Float3, odd.data() + 1, 13},
                                   {"w.result.z", TypeId::Float, doubled.data(), sizeof(float)},
                                   {"i.result", TypeId::Int32, &sums[0][1], sizeof sums[0]}};
        evaluator.evaluate(kRows, in, out, {-100, threads});
        for (std::size_t i = 0; i < kRows; ++i) {
            float vector[3];
            std::memcpy(vector, odd.data() + 1 + 13 * i, sizeof vector);
            ASSERT_EQ(vector[0], records[i].x + 0.5f);
            ASSERT_EQ(vector[1], 9);
            ASSERT_EQ(vector[2], 4);
            ASSERT_EQ(doubled[i], 8);
            ASSERT_EQ(products[i], 9 * records[i].x);
            ASSERT_EQ(sums[i], (std::array{0, 2 * static_cast<int>(i) - 100, 0}));
        }
        std::ranges::fill(products, -1.0f);
        std::ranges::fill(sums, std::array{0, 0, 0});
    }
    // Backwards.
    InputArray const in[] = {
        {"x", TypeId::Float, &records.back().x, -std::ptrdiff_t{sizeof(Record)}},
        {"y", TypeId::Float, &same, 0},
        {"n", TypeId::Int32, &records[0].n, 0}};
    OutputArray const out[] = {{"d.result", TypeId::Float, products.data(), sizeof(float)}};
    evaluator.evaluate(kRows, in, out);
    EXPECT_EQ(products[1], 9 * records[kRows - 2].x);
}

TEST(Arrays, FaultsNameTheArray)
{
    ArrayEvaluator const evaluator(graphOf(kArrayGraph, anyColumns()));
    float value = 5;
    InputArray const in[] = {{"x", TypeId::Double, &value, 0}, {"n", TypeId::Int32, &value, 0}};
    OutputArray const out[] = {{"v.result.x", TypeId::Float, &value, 4},
                               {"w.result.z", TypeId::Int32, &value, 4},
                               {"s.result", TypeId::Float, &value, 8}};
    EXPECT_EQ(faultsOf([&] {
                  evaluator.evaluate(2, in, out, {INT32_MAX, 1});
              }),
              "column 'x' is Float, its array Double\n"
              "column 'y' (Float) wants an array\n"
              "the graph lists no output 'v.result.x'\n"
              "output 'w.result.z' is Float, its array Int32\n"
              "output 's.result' is String, its array Float\n"
              "2 rows from frame 2147483647 on are more than there are frames\n");
    EXPECT_EQ(value, 5);
}

TEST(Arrays, FramesInAnyOrderTextsLogAndTheEnd)
{
    ArrayEvaluator const evaluator(graphOf(kArrayGraph, anyColumns()));
    std::vector<float> const x(3000);
    std::vector<std::int32_t> frames(x.size()), sums(x.size());
    for (std::size_t i = 0; i < x.size(); ++i)
        frames[i] = static_cast<std::int32_t>(2 * (x.size() - i));
    std::int32_t const n = 1;
    std::vector<nodus::String> texts(x.size());
    InputArray const in[] = {{"x", TypeId::Float, x.data(), sizeof(float)},
                             {"y", TypeId::Float, x.data(), 0},
                             {"n", TypeId::Int32, &n, 0}};
    OutputArray const out[] = {{"i.result", TypeId::Int32, sums.data(), sizeof sums[0]},
                               {"s.result", TypeId::String, texts.data(), sizeof texts[0]}};
    for (std::size_t const threads : {1u, 3u}) {
        TextBuffer log;
        std::atomic<std::size_t> done = 0;
        evaluator.evaluate(x.size(), in, out,
                           {.threads = threads,
                            .frames = frames.data(),
                            .framesStride = sizeof frames[0],
                            .log = &log,
                            .done = &done});
        EXPECT_EQ(done, x.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            ASSERT_EQ(sums[i], frames[i] + 1);
            ASSERT_EQ(static_cast<std::string const&>(texts[i]), "text");
        }
        EXPECT_EQ(std::ranges::count(log.view(), '\n'), std::ptrdiff_t(x.size()));
        std::ranges::fill(sums, 0);
    }
    std::atomic<bool> const stop = true;
    evaluator.evaluate(x.size(), in, out, {.stop = &stop});
    EXPECT_EQ(sums, std::vector<std::int32_t>(x.size()));
}
