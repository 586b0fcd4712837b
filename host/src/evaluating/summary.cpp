// Counting results, lane by lane, and the way back from a NaN.
#include "nodus/host/summary.h"

#include "modules/load.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"
#include "nodus/host/table.h"
#include "tables/row_window.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fmt/format.h>

namespace nodus::host {

namespace {

double valueAt(TypeId type, std::byte const* bytes)
{
    switch (type) {
    case TypeId::Float:
        return load<float>(bytes);
    case TypeId::Double:
        return load<double>(bytes);
    case TypeId::Int32:
        return load<std::int32_t>(bytes);
    case TypeId::UInt32:
        return load<std::uint32_t>(bytes);
    default:
        return load<std::uint8_t>(bytes);
    }
}

// One frame, with the rows that it reads.
void readRows(std::string const& path, Plan const& plan, Evaluator& evaluator, std::int32_t frame)
{
    TableReader table(path);
    TableParser const parser(table, plan);
    RowWindow window(table, parser.shifts());
    RowsOfFrames read;
    Diagnostics faults;
    if (!window.add(frame, read))
        return;
    for (std::size_t shift = 0; shift < read.uses.size(); ++shift) {
        auto const [row, isBeyond] = read.uses[shift];
        parser.parse(read.rows.row(row), read.rows.rows[row].line, evaluator, 0, faults, shift);
        if (isBeyond)
            parser.storeDefaults(evaluator, 0, shift);
    }
}

// The node whose NaN was the first on the way to the output, by its name; empty when the table
// cannot be read once more.
std::string whereNanCameUp(Graph graph, Summary::FirstNan const& nan, std::string const& tablePath)
{
    if (isStandardStream(tablePath))
        return {};
    // All that the output takes from, in the order of evaluation.
    std::vector<bool> isTaken(graph.nodes.size());
    isTaken[graph.outputs[nan.output].node] = true;
    for (auto node = graph.order.rbegin(); node != graph.order.rend(); ++node)
        for (Feed const& feed : graph.nodes[*node].feeds)
            if (isTaken[*node] && feed.source.kind == Source::Kind::node)
                isTaken[feed.source.index] = true;
    graph.outputs.clear();
    for (std::size_t const node : graph.order)
        for (Port const& port : graph.nodes[node].type->outputs)
            if (isTaken[node] && isReal(port.type->lane))
                graph.outputs.push_back({graph.nodes[node].name, node, port.offset, port.type});
    Plan const plan = compile(graph, 1);
    Evaluator evaluator(plan, nullptr);
    if (!tablePath.empty())
        readRows(tablePath, plan, evaluator, nan.frame);
    evaluator.evaluate(std::span(&nan.frame, 1));
    for (std::size_t i = 0; i < plan.outputs.size(); ++i) {
        PlanOutput const& output = plan.outputs[i];
        for (std::size_t lane = 0; lane < output.type->laneNames.size(); ++lane)
            if (std::isnan(valueAt(output.type->lane,
                                   evaluator.at(output.place, 0) + lane * output.type->laneSize)))
                return output.name;
    }
    return {};
}

}  // namespace

Summary::Summary(Plan const& plan, Extent extent)
    : m_withAll(extent != Extent::nan), m_keepsValues(extent == Extent::values)
{
    for (std::size_t i = 0; i < plan.outputs.size(); ++i) {
        PlanOutput const& output = plan.outputs[i];
        ValueType const& type = *output.type;
        if (type.id == TypeId::String || (!m_withAll && !isReal(type.lane)))
            continue;
        for (std::size_t lane = 0; lane < type.laneNames.size(); ++lane) {
            std::string name = output.name;
            name += (type.isScalar() ? "" : ".") + std::string(type.laneNames[lane]);
            Place place = output.place;
            place.offset += static_cast<std::uint32_t>(lane * type.laneSize);
            m_lanes.push_back({std::move(name), place, type.lane, i});
        }
    }
}

void Summary::look(Lane& lane, double value) const
{
    if (std::isnan(value))
        ++lane.nans;
    else if (std::isinf(value))
        ++lane.infinities;
    else {
        ++lane.finite;
        lane.least = std::min(lane.least, value);
        lane.most = std::max(lane.most, value);
        lane.sum += value;
    }
}

void Summary::add(Evaluator const& evaluator, std::span<std::int32_t const> frames)
{
    std::vector<bool> hasNan(frames.size());
    for (Lane& lane : m_lanes)
        for (std::size_t i = 0; i < frames.size(); ++i) {
            double const value = valueAt(lane.type, evaluator.at(lane.place, i));
            if (m_withAll)
                look(lane, value);
            if (m_keepsValues)
                lane.values.push_back(value);
            if (!std::isnan(value))
                continue;
            hasNan[i] = true;
            if (!m_firstNan || frames[i] < m_firstNan->frame)
                m_firstNan = {lane.output, frames[i]};
        }
    m_frames += frames.size();
    if (m_keepsValues)
        m_framesKept.insert(m_framesKept.end(), frames.begin(), frames.end());
    m_framesWithNan += static_cast<std::uint64_t>(std::ranges::count(hasNan, true));
}

void Summary::add(Summary const& later)
{
    m_frames += later.m_frames;
    m_framesKept.insert(m_framesKept.end(), later.m_framesKept.begin(), later.m_framesKept.end());
    m_framesWithNan += later.m_framesWithNan;
    if (!m_firstNan)
        m_firstNan = later.m_firstNan;
    for (std::size_t i = 0; i < m_lanes.size() && m_withAll; ++i) {
        Lane& lane = m_lanes[i];
        Lane const& more = later.m_lanes[i];
        lane.nans += more.nans;
        lane.infinities += more.infinities;
        lane.finite += more.finite;
        lane.least = std::min(lane.least, more.least);
        lane.most = std::max(lane.most, more.most);
        lane.sum += more.sum;
        lane.values.insert(lane.values.end(), more.values.begin(), more.values.end());
    }
}

std::string Summary::text() const
{
    std::size_t width = 6;
    for (Lane const& lane : m_lanes)
        width = std::max(width, lane.name.size());
    std::string text = fmt::format("{:<{}} {:>9} {:>12} {:>12} {:>12} {:>7} {:>8}\n", "result",
                                   width, "count", "minimum", "maximum", "mean", "NaN", "infinite");
    for (Lane const& lane : m_lanes) {
        auto const shown = [&](double value) {
            return lane.finite == 0 ? "-" : fmt::format("{:.6g}", value);
        };
        text += fmt::format("{:<{}} {:>9} {:>12} {:>12} {:>12} {:>7} {:>8}\n", lane.name, width,
                            lane.nans + lane.infinities + lane.finite, shown(lane.least),
                            shown(lane.most), shown(lane.sum / static_cast<double>(lane.finite)),
                            lane.nans, lane.infinities);
    }
    return text;
}

std::string noteOfNan(Summary const& summary, Graph graph, std::string const& tablePath)
{
    auto const& nan = summary.firstNan();
    if (!nan)
        return {};
    std::string const output = graph.outputs[nan->output].name;
    std::string const node = whereNanCameUp(std::move(graph), *nan, tablePath);
    return fmt::format("note: NaN in {} of {} frames, first in frame {}, '{}'{}",
                       summary.framesWithNan(), summary.frames(), nan->frame, printable(output),
                       node.empty() ? "" : "; it came up in node " + inQuotes(node));
}

}  // namespace nodus::host
