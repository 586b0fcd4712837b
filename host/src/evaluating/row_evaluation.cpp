// One call a node and block of rows.
#include "row_evaluation.h"

#include "nodus/host/frames.h"
#include "nodus/runtime/EvaluationScope.h"

#include <algorithm>
#include <cstring>

namespace nodus::host {

using runtime::RowsOfPort;

RowEvaluation::RowEvaluation(Plan const& plan, std::byte* arena)
    : m_plan(plan), m_isBlockMove(plan.moves.size()), m_sources(plan.sources.size()),
      m_outputs(plan.outputs.size())
{
    auto const rowsAt = [&](Place place) { return RowsOfPort{arena + place.offset, place.stride}; };
    m_ports.reserve(plan.ports.size());
    for (Place const place : plan.ports)
        m_ports.push_back(rowsAt(place));
    m_gathers.reserve(plan.moves.size());
    for (Move const& move : plan.moves)
        m_gathers.push_back({rowsAt(move.from), rowsAt(move.to), move.type});
    for (Step const& step : plan.steps)
        std::fill_n(m_isBlockMove.begin() + step.firstMove, step.moveCount, true);
}

void RowEvaluation::evaluate(std::span<std::int32_t const> frames,
                             std::function<void(Step const&)> const& callBlock)
{
    std::span const steps = m_plan.rowSteps;
    if (!m_isDoneOnce)
        for (RowStep const& step : steps.first(m_plan.onceCount))
            run(step, frames.first(1), callBlock);
    m_isDoneOnce = true;
    for (RowStep const& step : steps.subspan(m_plan.onceCount))
        run(step, frames, callBlock);
}

void RowEvaluation::run(RowStep const& step, std::span<std::int32_t const> frames,
                        std::function<void(Step const&)> const& callBlock)
{
    if (step.solve == nullptr)
        return callBlock(m_plan.steps[step.step]);
    for (Gather const& gather : std::span(m_gathers).subspan(step.firstMove, step.moveCount))
        moveRows(gather.type, static_cast<std::byte const*>(gather.from.first), gather.from.stride,
                 static_cast<std::byte*>(gather.to.first), gather.to.stride, frames.size());
    RowsOfPort const* const ports = m_ports.data() + step.firstPort;
    // A kernel may leave an output as it is; what it was must not depend on the rows before.
    if (step.clearsOutputs)
        for (std::size_t port = step.inputCount; port < step.inputCount + step.outputCount; ++port)
            for (std::size_t row = 0; row < frames.size(); ++row)
                // All rows' one is zero from the beginning, and written once.
                std::memset(static_cast<std::byte*>(ports[port].first) +
                                static_cast<std::ptrdiff_t>(row) * ports[port].stride,
                            0, m_plan.ports[step.firstPort + port].stride);
    if (step.shift != 0)
        return runShifted(step, frames);
    step.solve(frames.size(), ports, step.needsFrames ? frames.data() : nullptr);
}

// At other frames, and without the log.
void RowEvaluation::runShifted(RowStep const& step, std::span<std::int32_t const> frames)
{
    m_shifted.clear();
    for (std::int32_t const frame : frames)
        m_shifted.push_back(shiftedFrame(frame, step.shift));
    runtime::LocalServiceTable const silence{};
    runtime::EvaluationScope const scope(m_shifted.front(), &silence);
    step.solve(frames.size(), m_ports.data() + step.firstPort,
               step.needsFrames ? m_shifted.data() : nullptr);
}

namespace {

bool isWithin(Place inner, Place place, std::size_t size)
{
    return inner.offset >= place.offset && inner.offset < place.offset + size;
}

}  // namespace

std::vector<RowEvaluation::Reader> RowEvaluation::readersOf(Place place, std::size_t size)
{
    std::vector<Reader> readers;
    auto const look = [&](Place inner, RowsOfPort& rows) {
        if (isWithin(inner, place, size))
            readers.push_back({&rows, static_cast<std::ptrdiff_t>(inner.offset - place.offset)});
    };
    for (std::size_t i = 0; i < m_ports.size(); ++i)
        look(m_plan.ports[i], m_ports[i]);
    for (std::size_t i = 0; i < m_gathers.size(); ++i)
        look(m_plan.moves[i].from, m_gathers[i].from);
    return readers;
}

bool RowEvaluation::isReadByBlocks(Place place, std::size_t size) const
{
    for (std::size_t i = 0; i < m_gathers.size(); ++i)
        if (m_isBlockMove[i] && isWithin(m_plan.moves[i].from, place, size))
            return true;
    return false;
}

bool RowEvaluation::bind(Readers const& readers, RowsOfPort rows)
{
    if (!readers)
        return false;
    for (Reader const& reader : *readers)
        *reader.rows = {static_cast<std::byte*>(rows.first) + reader.inner, rows.stride};
    return true;
}

bool RowEvaluation::bindSource(std::size_t k, RowsOfPort rows)
{
    PlanSource const& source = m_plan.sources[k];
    if (!m_sources[k])
        m_sources[k] = isReadByBlocks(source.place, source.type->size)
                           ? Readers{}
                           : Readers{readersOf(source.place, source.type->size)};
    return bind(*m_sources[k], rows);
}

// A whole column of a kernel over rows, which nobody else lists.
bool RowEvaluation::mayBindOutput(PlanOutput const& output) const
{
    std::size_t const size = output.type->size;
    auto const writes = [&](RowStep const& step) {
        auto const ports =
            std::span(m_plan.ports).subspan(step.firstPort + step.inputCount, step.outputCount);
        return std::ranges::any_of(ports, [&](Place port) {
            return port.offset == output.place.offset && port.stride == size;
        });
    };
    auto const isListed = [&](PlanOutput const& other) {
        return isWithin(other.place, output.place, size);
    };
    return output.place.stride == size && output.type->id != TypeId::String &&
           std::ranges::any_of(m_plan.rowSteps, writes) &&
           std::ranges::count_if(m_plan.outputs, isListed) == 1 &&
           !isReadByBlocks(output.place, size);
}

bool RowEvaluation::bindOutput(std::size_t k, RowsOfPort rows)
{
    PlanOutput const& output = m_plan.outputs[k];
    if (!m_outputs[k])
        m_outputs[k] =
            mayBindOutput(output) ? Readers{readersOf(output.place, output.type->size)} : Readers{};
    return bind(*m_outputs[k], rows);
}

}  // namespace nodus::host
