// Broadcasting: the shape of a call, and the rows along its longest axis.
#include "calls.h"

#include "results.h"
#include "threads.h"

#include "nodus/host/frame_log.h"
#include "nodus/runtime/EvaluationScope.h"

#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <optional>

namespace nodus::python {

namespace py = pybind11;
using runtime::RowsOfPort;

namespace {

// Fewer rows than this take less time than handing over the interpreter lock.
constexpr npy_intp kManyRows = 1024;
constexpr npy_intp kRowsAtOnce = 16384;
// As many parts are worth the threads.
constexpr npy_intp kManyParts = 16;
// How many rows to compute between two looks at the clock.
constexpr npy_intp kRowsOfWave = 64 * kRowsAtOnce;

py::object s_isLogWanted, s_takeLog;

// The shape of all, or nothing when they do not go together.
std::optional<Shape> broadcast(std::span<Operand const* const> operands)
{
    Shape shape;
    for (Operand const* const operand : operands) {
        if (operand->shape.size() > shape.size())
            shape.insert(shape.begin(), operand->shape.size() - shape.size(), 1);
        std::size_t const behind = shape.size() - operand->shape.size();
        for (std::size_t i = 0; i < operand->shape.size(); ++i) {
            npy_intp& extent = shape[behind + i];
            npy_intp const own = operand->shape[i];
            if (extent == 1)
                extent = own;
            else if (own != 1 && own != extent)
                return std::nullopt;
        }
    }
    return shape;
}

// The shape of a call: that of the inputs, or of the caller's arrays, which the inputs fill.
Shape shapeOfCall(host::NodeType const& type, std::vector<Operand const*> operands,
                  std::span<Result const> results)
{
    std::optional<Shape> const shape = broadcast(operands);
    if (!shape) {
        std::string all;
        for (Operand const* const each : operands)
            all += (all.empty() ? "" : ", ") + shapeText(each->shape);
        PyErr_SetString(PyExc_ValueError,
                        (type.name + ": the ports' arrays do not go together: " + all).c_str());
        throw py::error_already_set();
    }
    std::size_t const inputs = operands.size();
    for (Result const& result : results)
        if (result.given() != nullptr)
            operands.push_back(result.given());
    if (operands.size() == inputs)
        return *shape;
    std::optional<Shape> const whole = broadcast(operands);
    for (Result const& result : results)
        if (result.given() != nullptr && (!whole || result.given()->shape != *whole))
            result.refuseShape(*shape);
    return *whole;
}

// One operand along the axes of the call.
struct Strides {
    std::byte* first;
    Shape strides;
};

Strides alongAxes(Operand const& operand, Shape const& shape)
{
    Strides along{operand.first, Shape(shape.size())};
    std::size_t const missing = shape.size() - operand.shape.size();
    for (std::size_t i = 0; i < operand.shape.size(); ++i)
        if (operand.shape[i] != 1)
            along.strides[missing + i] = operand.strides[i];
    return along;
}

// Axes of one row are dropped, and those that lie behind each other in every operand become one.
void mergeAxes(Shape& shape, std::vector<Strides>& operands)
{
    auto const drop = [&](std::size_t axis) {
        shape.erase(shape.begin() + static_cast<std::ptrdiff_t>(axis));
        for (Strides& operand : operands)
            operand.strides.erase(operand.strides.begin() + static_cast<std::ptrdiff_t>(axis));
    };
    for (std::size_t axis = shape.size(); axis-- > 0;) {
        if (shape[axis] == 1) {
            drop(axis);
            continue;
        }
        if (axis + 1 >= shape.size())
            continue;
        bool const isOne = std::ranges::all_of(operands, [&](Strides const& operand) {
            return operand.strides[axis] == operand.strides[axis + 1] * shape[axis + 1];
        });
        if (isOne) {
            shape[axis + 1] *= shape[axis];
            drop(axis);
        }
    }
}

// Computes the rows of a call without the interpreter lock. A signal's exception ends it.
class RowsCall {
public:
    RowsCall(runtime::RowsOfKernel const& rows, std::size_t ports, runtime::LogService* log)
        : m_solve(rows.solve), m_ports(ports), m_mayShare(!rows.needsFrames && !rows.needsServices),
          m_scope(0, &m_services)
    {
        m_services.log = log;
    }

    // The operands: the ports and, behind them, the frames where they are asked for.
    void run(Shape shape, std::vector<Strides> operands)
    {
        npy_intp const rows = countOf(shape);
        if (rows == 0)
            return;
        mergeAxes(shape, operands);
        // The longest axis is the inner one.
        std::size_t const inner =
            static_cast<std::size_t>(std::ranges::max_element(shape) - shape.begin());
        npy_intp const count = shape.empty() ? 1 : shape[inner];
        if (!shape.empty())
            shape[inner] = 1;
        std::optional<py::gil_scoped_release> release;
        if (rows >= kManyRows)
            release.emplace();
        Shape index(shape.size());
        for (;;) {
            runAxis(operands, inner, count, release.has_value());
            std::size_t axis = shape.size();
            while (axis-- > 0) {
                for (Strides& operand : operands)
                    operand.first += operand.strides[axis];
                if (++index[axis] < shape[axis])
                    break;
                for (Strides& operand : operands)
                    operand.first -= operand.strides[axis] * shape[axis];
                index[axis] = 0;
            }
            if (axis == static_cast<std::size_t>(-1))
                return;
        }
    }

private:
    void runAxis(std::vector<Strides> const& operands, std::size_t axis, npy_intp count,
                 bool isReleased)
    {
        npy_intp const atOnce = isReleased ? kRowsOfWave : count;
        for (npy_intp first = 0; first < count; first += atOnce) {
            npy_intp const end = std::min(count, first + atOnce);
            npy_intp const parts = (end - first + kRowsAtOnce - 1) / kRowsAtOnce;
            auto const runPart = [&](npy_intp part) {
                npy_intp const begin = first + part * kRowsAtOnce;
                runRows(operands, axis, begin, std::min(kRowsAtOnce, end - begin));
            };
            std::size_t const threads =
                m_mayShare && parts >= kManyParts ? threadsToUse(threadsSet()) : 1;
            if (threads == 1) {
                for (npy_intp part = 0; part < parts; ++part)
                    runPart(part);
            } else {
                tbb::global_control const limit(tbb::global_control::max_allowed_parallelism,
                                                threads);
                tbb::task_arena arena(static_cast<int>(threads));
                arena.execute([&] { tbb::parallel_for(npy_intp{0}, parts, runPart); });
            }
            m_sinceLook += end - first;
            if (isReleased && m_sinceLook >= kRowsAtOnce)
                look();
        }
    }

    void runRows(std::vector<Strides> const& operands, std::size_t axis, npy_intp first,
                 npy_intp count)
    {
        std::array<RowsOfPort, kMostOperands> ports;
        for (std::size_t i = 0; i < operands.size(); ++i) {
            npy_intp const stride = operands[i].strides.empty() ? 0 : operands[i].strides[axis];
            ports[i] = {operands[i].first + first * stride, stride};
        }
        std::int32_t const* frames = nullptr;
        if (operands.size() > m_ports)
            frames = framesOf(ports[m_ports], static_cast<std::size_t>(count));
        m_solve(static_cast<std::size_t>(count), ports.data(), frames);
    }

    std::int32_t const* framesOf(RowsOfPort const& rows, std::size_t count)
    {
        m_frames.resize(count);
        auto const* from = static_cast<std::byte const*>(rows.first);
        for (std::int32_t& frame : m_frames) {
            std::memcpy(&frame, from, sizeof frame);
            from += rows.stride;
        }
        return m_frames.data();
    }

    void look()
    {
        m_sinceLook = 0;
        auto const now = std::chrono::steady_clock::now();
        if (now - m_lastLook < kPatience)
            return;
        m_lastLook = now;
        py::gil_scoped_acquire const lock;
        if (PyErr_CheckSignals() != 0)
            throw py::error_already_set();
    }

    runtime::SolveRows m_solve;
    std::size_t m_ports;
    bool m_mayShare;  // between threads: no row sees more than its ports
    runtime::LocalServiceTable m_services;
    runtime::EvaluationScope m_scope;
    std::vector<std::int32_t> m_frames;
    npy_intp m_sinceLook = 0;
    std::chrono::steady_clock::time_point m_lastLook = std::chrono::steady_clock::now();
};

}  // namespace

Results callRows(host::NodeType const& type, runtime::RowsOfKernel const& rows,
                 std::span<Operand> inputs, Operand* frames, std::span<py::object const> out)
{
    std::vector<Operand const*> given;
    for (Operand const& input : inputs)
        given.push_back(&input);
    if (frames != nullptr)
        given.push_back(frames);
    std::vector<Result> results;
    for (std::size_t i = 0; i < type.outputs.size(); ++i)
        results.emplace_back(type, type.outputs[i], out[i]);
    Shape const shape = shapeOfCall(type, given, results);

    std::vector<py::object> inUse;
    for (Operand const* const operand : given)
        if (operand->array)
            inUse.push_back(operand->array);
    std::vector<Strides> operands;
    for (Operand const& input : inputs)
        operands.push_back(alongAxes(input, shape));
    for (Result& result : results)
        operands.push_back(alongAxes(result.prepare(shape, inUse), shape));
    std::size_t const ports = operands.size();
    if (frames != nullptr)
        operands.push_back(alongAxes(*frames, shape));
    host::FrameLog log;
    bool const logs = rows.needsServices && isLogWanted();
    RowsCall(rows, ports, logs ? &log : nullptr).run(shape, std::move(operands));
    if (logs) {
        host::TextBuffer lines;
        log.takeLines(lines);
        passOnLog(lines.view());
    }
    Results made;
    for (Result& result : results)
        made.push_back(result.take());
    return made;
}

bool isLogWanted() { return s_isLogWanted && py::cast<bool>(s_isLogWanted()); }

void passOnLog(std::string_view lines)
{
    if (!lines.empty())
        s_takeLog(py::str(lines.data(), lines.size()));
}

void setLog(py::object isWanted, py::object take)
{
    s_isLogWanted = std::move(isWanted);
    s_takeLog = std::move(take);
}

}  // namespace nodus::python
