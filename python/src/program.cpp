// Graphs over NumPy's arrays: long evaluations have a thread of their own, so that the caller's can
// look at signals and tell how far they are.
#include "program.h"

#include "array_types.h"
#include "calls.h"
#include "results.h"
#include "threads.h"

#include "nodus/String.h"
#include "nodus/host/arrays.h"
#include "nodus/host/graph_drawing.h"
#include "nodus/host/image.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace nodus::python {

namespace py = pybind11;
using host::TypeId;

namespace {

// So many rows of a node take from ten milliseconds to some tenths of a second: less is not worth a
// thread, for which a busy machine would have to find time.
constexpr std::size_t kLongWork = std::size_t{16} << 20;

// An evaluation on another thread.
class Task {
public:
    template <typename Work>
    explicit Task(Work work)
        : m_thread([this, work = std::move(work)] {
              std::exception_ptr failure;
              try {
                  work();
              } catch (...) {
                  failure = std::current_exception();
              }
              std::scoped_lock const lock(m_mutex);
              m_failure = failure;
              m_isDone = true;
              m_changed.notify_all();
          })
    {
    }
    ~Task() { m_thread.join(); }
    Task(Task const&) = delete;
    Task& operator=(Task const&) = delete;

    // False when it takes longer than that. Rethrows what the work threw.
    bool waitFor(std::chrono::milliseconds patience)
    {
        std::unique_lock lock(m_mutex);
        if (!m_changed.wait_for(lock, patience, [&] { return m_isDone; }))
            return false;
        if (m_failure)
            std::rethrow_exception(m_failure);
        return true;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isDone = false;
    std::exception_ptr m_failure;
    std::thread m_thread;
};

struct Column {
    std::string name;
    TypeId type;
};

class Program {
public:
    // With columns and pixels as it likes; check() says whether they are there.
    Program(host::Catalogue const& catalogue, std::string_view text, std::string const& origin)
        : m_graph(read(catalogue, text, origin, {"", nullptr, true, true}))
    {
        for (auto const& [column, type] : host::columnsRead(m_graph))
            m_columns.push_back({m_graph.columns[column], type});
        using Kind = host::Source::Kind;
        for (host::GraphNode const& node : m_graph.nodes)
            for (host::Feed const& feed : node.feeds)
                m_hasPixels = m_hasPixels || feed.source.kind == Kind::pixelX ||
                              feed.source.kind == Kind::pixelY;
    }

    bool hasPixels() const { return m_hasPixels; }
    std::string draw(std::string const& title) const { return host::drawGraph(m_graph, title); }

    // (name, type) of each column that is read; twice when two types are read from it.
    py::list columns() const
    {
        py::list columns;
        for (Column const& column : m_columns)
            columns.append(py::make_tuple(column.name, host::valueType(column.type).name));
        return columns;
    }
    py::list outputs() const
    {
        py::list outputs;
        for (host::GraphOutput const& output : m_graph.outputs)
            outputs.append(py::make_tuple(output.name, output.type->name));
        return outputs;
    }

    // columns: an array each, in the order of columns(), one value a row or one for all; outputs:
    // as many arrays to write to, of any length for a text. frames: an array of Int32, one a row or
    // one for all; or a number, the first one. threads: 0 for as many as are set. report: called
    // with the number of rows that are done, or None. Returns the texts.
    py::list evaluate(std::size_t rows, py::list const& columns, py::list const& outputs,
                      py::object const& frames, std::size_t threads, std::size_t imageWidth,
                      py::object const& report)
    {
        if (!m_evaluator)
            m_evaluator.emplace(m_graph);
        std::vector<host::InputArray> in;
        for (std::size_t i = 0; i < columns.size(); ++i)
            in.push_back(
                {m_columns[i].name, m_columns[i].type, dataOf(columns[i]), strideOf(columns[i])});
        std::vector<host::OutputArray> out;
        std::vector<std::vector<String>> texts;
        texts.reserve(outputs.size());
        for (std::size_t i = 0; i < outputs.size(); ++i) {
            host::GraphOutput const& output = m_graph.outputs[i];
            if (output.type->id == TypeId::String)
                out.push_back(
                    {output.name, TypeId::String, texts.emplace_back(rows).data(), sizeof(String)});
            else
                out.push_back({output.name, output.type->id, dataOf(outputs[i]),
                               static_cast<std::ptrdiff_t>(output.type->size)});
        }
        std::atomic<std::size_t> done = 0;
        std::atomic<bool> stop = false;
        host::TextBuffer log;
        host::ArrayOptions options;
        options.threads = threadsToUse(threads != 0 ? threads : threadsSet());
        if (PyLong_Check(frames.ptr()) != 0) {
            options.firstFrame = py::cast<std::int32_t>(frames);
        } else {
            options.frames = dataOf(frames);
            options.framesStride = strideOf(frames);
        }
        options.imageWidth = imageWidth;
        options.log = isLogWanted() ? &log : nullptr;
        options.done = &done;
        options.stop = &stop;
        auto const work = [&] { m_evaluator->evaluate(rows, in, out, options); };
        {
            py::gil_scoped_release const release;
            if (rows * m_graph.nodes.size() < kLongWork)
                work();
            else
                watch(work, done, stop, report);
        }
        if (!report.is_none())
            report(rows);
        passOnLog(log.view());
        py::list lists;
        for (std::vector<String> const& each : texts)
            lists.append(listOf(each));
        return lists;
    }

    // Throws Fault when the graph cannot be evaluated so.
    static void check(host::Catalogue const& catalogue, std::string_view text,
                      std::string const& origin,
                      std::optional<std::vector<std::string>> const& columns, bool pixels)
    {
        host::Graph const graph =
            read(catalogue, text, origin,
                 {columns ? "columns" : "", columns ? &*columns : nullptr, pixels});
        if (pixels)
            host::requirePicture(graph, origin);
    }

private:
    static host::Graph read(host::Catalogue const& catalogue, std::string_view text,
                            std::string const& origin, host::GraphSurroundings const& surroundings)
    {
        host::Diagnostics faults;
        host::Graph graph = host::parseGraph(text, origin, catalogue, surroundings, faults);
        faults.throwIfAny();
        return graph;
    }

    static void* dataOf(py::handle array) { return PyArray_DATA(asArray(array)); }
    static std::ptrdiff_t strideOf(py::handle array)
    {
        return PyArray_NDIM(asArray(array)) == 0 ? 0 : PyArray_STRIDE(asArray(array), 0);
    }

    template <typename Work>
    static void watch(Work work, std::atomic<std::size_t> const& done, std::atomic<bool>& stop,
                      py::object const& report)
    {
        Task task(work);
        while (!task.waitFor(kPatience)) {
            py::gil_scoped_acquire const lock;
            try {
                if (PyErr_CheckSignals() != 0)
                    throw py::error_already_set();
                if (!report.is_none())
                    report(done.load());
            } catch (...) {
                stop = true;
                // The threads that compute may wait for none of this one's locks.
                py::gil_scoped_release const release;
                while (!task.waitFor(kPatience)) {
                }
                throw;
            }
        }
    }

    host::Graph m_graph;
    std::vector<Column> m_columns;
    bool m_hasPixels = false;
    std::optional<host::ArrayEvaluator> m_evaluator;
};

}  // namespace

void addProgram(py::module_& module, host::Catalogue const& catalogue)
{
    py::class_<Program>(module, "Program")
        .def(py::init([&catalogue](std::string_view text, std::string const& origin) {
            return std::make_unique<Program>(catalogue, text, origin);
        }))
        .def_property_readonly("columns", &Program::columns)
        .def_property_readonly("outputs", &Program::outputs)
        .def_property_readonly("has_pixels", &Program::hasPixels)
        .def("draw", &Program::draw)
        .def("evaluate", &Program::evaluate);
    module.def("check",
               [&catalogue](std::string_view text, std::string const& origin,
                            std::optional<std::vector<std::string>> const& columns, bool pixels) {
                   Program::check(catalogue, text, origin, columns, pixels);
               });
}

}  // namespace nodus::python
