// What came out of a run: how many results, between which ends, and where the first NaN was.
#pragma once

#include "nodus/host/evaluator.h"
#include "nodus/host/graph.h"
#include "nodus/host/plan.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace nodus::host {

// For one thread at a time. The plan outlives it.
class Summary {
public:
    // What is looked for: NaN alone, all that text() tells, or besides it the values themselves.
    enum class Extent { nan, all, values };
    Summary(Plan const& plan, Extent extent);

    // The frames of the evaluator's last block.
    void add(Evaluator const& evaluator, std::span<std::int32_t const> frames);
    // What another one has, of later frames.
    void add(Summary const& later);

    // A line for each lane of the outputs, under a line of headings. Mean, minimum and maximum are
    // of what is finite.
    std::string text() const;

    struct FirstNan {
        std::size_t output;  // of the plan
        std::int32_t frame;
    };
    std::optional<FirstNan> const& firstNan() const { return m_firstNan; }
    std::uint64_t framesWithNan() const { return m_framesWithNan; }
    std::uint64_t frames() const { return m_frames; }

    struct Lane {
        std::string name;
        Place place;
        TypeId type;
        std::size_t output;
        std::uint64_t nans = 0, infinities = 0, finite = 0;
        double least = std::numeric_limits<double>::infinity();
        double most = -std::numeric_limits<double>::infinity();
        double sum = 0;
        std::vector<double> values{};  // one a frame, with Extent::values
    };
    std::vector<Lane> const& lanes() const { return m_lanes; }
    // With Extent::values, the frames of these.
    std::vector<std::int32_t> const& framesKept() const { return m_framesKept; }

private:
    void look(Lane& lane, double value) const;

    bool m_withAll, m_keepsValues;
    std::vector<Lane> m_lanes;
    std::vector<std::int32_t> m_framesKept;
    std::optional<FirstNan> m_firstNan;
    std::uint64_t m_framesWithNan = 0, m_frames = 0;
};

// One line that tells of NaN in the results of the graph: in how many frames, the first of them
// and, unless the table cannot be read once more, the node where it came up; empty without any.
// tablePath: empty without a table.
std::string noteOfNan(Summary const& summary, Graph graph, std::string const& tablePath);

}  // namespace nodus::host
