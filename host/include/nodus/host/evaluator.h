// Evaluating a plan: one evaluator per thread, each with an arena and workspaces of its own.
#pragma once

#include "nodus/host/plan.h"
#include "nodus/runtime/EvaluationScope.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace nodus::host {

class RowEvaluation;

// For one thread at a time. The plan and the log service outlive it.
class Evaluator {
public:
    // log: where the messages of logging nodes go, or null. While a message is sent,
    // runtime::GetCurrentFrame() is the frame it belongs to; within a block of frames the messages
    // of one node come together.
    Evaluator(Plan const& plan, runtime::LogService* log);
    ~Evaluator();
    Evaluator(Evaluator const&) = delete;
    Evaluator& operator=(Evaluator const&) = delete;

    // Evaluates up to plan.framesPerBlock frames. Values of columns and pixels have been written to
    // their places before; the frames themselves are written here.
    void evaluate(std::span<std::int32_t const> frames);

    // For frame i of the last block. Valid until the next call of evaluate.
    std::byte* at(Place place, std::size_t i) { return m_arena + place.offset + i * place.stride; }
    std::byte const* at(Place place, std::size_t i) const
    {
        return m_arena + place.offset + i * place.stride;
    }

    Plan const& plan() const { return m_plan; }

    // In a plan for rows: from now on source or output number k is read and written where the
    // caller has it, one value after the other at first + i * stride, aligned as the type is; its
    // place is not used. False when the plan does not allow it: then nothing has changed.
    bool bindSource(std::size_t k, runtime::RowsOfPort rows);
    bool bindOutput(std::size_t k, runtime::RowsOfPort rows);

private:
    struct Free {
        void operator()(std::byte* arena) const;
    };

    void callBlock(Step const& step, std::span<std::int32_t const> frames,
                   runtime::EvaluationScope& scope);
    // As any other step, but at other frames and without the log.
    void callShifted(Step const& step, std::span<std::int32_t const> frames);
    void evaluateRows(std::span<std::int32_t const> frames, runtime::EvaluationScope& scope);
    void call(Step const& step, std::span<std::int32_t const> frames,
              runtime::EvaluationScope& scope);

    Plan const& m_plan;
    std::unique_ptr<std::byte, Free> m_memory;
    std::byte* m_arena;
    runtime::LocalServiceTable m_services;
    std::unique_ptr<RowEvaluation> m_rows;  // of a plan for rows
    std::vector<std::int32_t> m_shifted;
    bool m_isInitialised = false;
};

}  // namespace nodus::host
