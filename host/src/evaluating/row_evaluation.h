// Evaluating a plan for rows: its places as addresses, which callers' arrays may take over.
#pragma once

#include "nodus/host/plan.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace nodus::host {

// Values of one type from row to row; texts are shared.
void moveRows(TypeId type, std::byte const* from, std::ptrdiff_t fromStride, std::byte* to,
              std::ptrdiff_t toStride, std::size_t rows);

// For one thread at a time. Plan and arena outlive it.
class RowEvaluation {
public:
    RowEvaluation(Plan const& plan, std::byte* arena);

    // The sources have their values. callBlock does for a kernel without rows what is to do.
    void evaluate(std::span<std::int32_t const> frames,
                  std::function<void(Step const&)> const& callBlock);

    // As the evaluator has them.
    bool bindSource(std::size_t k, runtime::RowsOfPort rows);
    bool bindOutput(std::size_t k, runtime::RowsOfPort rows);

private:
    struct Gather {
        runtime::RowsOfPort from, to;
        TypeId type;
    };

    void runShifted(RowStep const& step, std::span<std::int32_t const> frames);
    void run(RowStep const& step, std::span<std::int32_t const> frames,
             std::function<void(Step const&)> const& callBlock);
    // Whatever reads or writes within a place: what is bound in its stead.
    struct Reader {
        runtime::RowsOfPort* rows;
        std::ptrdiff_t inner;
    };
    using Readers = std::optional<std::vector<Reader>>;
    std::vector<Reader> readersOf(Place place, std::size_t size);
    bool isReadByBlocks(Place place, std::size_t size) const;
    bool mayBindOutput(PlanOutput const& output) const;
    static bool bind(Readers const& readers, runtime::RowsOfPort rows);

    Plan const& m_plan;
    std::vector<runtime::RowsOfPort> m_ports;  // as plan.ports
    std::vector<Gather> m_gathers;             // as plan.moves
    std::vector<bool> m_isBlockMove;           // of plan.moves: made by a step for blocks
    // Looked for when they are first bound; none when that is not possible.
    std::vector<std::optional<Readers>> m_sources, m_outputs;
    bool m_isDoneOnce = false;
    std::vector<std::int32_t> m_shifted;
};

}  // namespace nodus::host
