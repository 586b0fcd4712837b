// The inner loop: moves, then calls, for every node over the frames of a block.
#include "nodus/host/evaluator.h"

#include "evaluating/row_evaluation.h"
#include "nodus/String.h"
#include "nodus/host/frames.h"
#include "nodus/runtime/EvaluationScope.h"

#include <cstring>
#include <functional>
#include <new>

namespace nodus::host {

namespace {

constexpr std::align_val_t kArenaAlignment{64};

// A size that the compiler knows is one or two packed instructions.
template <std::size_t size>
void moveBytes(std::byte const* from, std::ptrdiff_t fromStride, std::byte* to,
               std::ptrdiff_t toStride, std::size_t frames)
{
    for (std::size_t i = 0; i < frames; ++i) {
        std::memcpy(to, from, size);
        from += fromStride;
        to += toStride;
    }
}

void moveTexts(std::byte const* from, std::ptrdiff_t fromStride, std::byte* to,
               std::ptrdiff_t toStride, std::size_t frames)
{
    for (std::size_t i = 0; i < frames; ++i) {
        *reinterpret_cast<String*>(to) = *reinterpret_cast<String const*>(from);
        from += fromStride;
        to += toStride;
    }
}

[[gnu::always_inline]] inline void moveValues(TypeId type, std::byte const* from,
                                              std::ptrdiff_t fromStride, std::byte* to,
                                              std::ptrdiff_t toStride, std::size_t frames)
{
    auto const bytes = [&]<std::size_t size>(std::integral_constant<std::size_t, size>) {
        moveBytes<size>(from, fromStride, to, toStride, frames);
    };
    switch (type) {
    case TypeId::Bool:
    case TypeId::UInt8:
        return bytes(std::integral_constant<std::size_t, 1>{});
    case TypeId::Int32:
    case TypeId::UInt32:
    case TypeId::Float:
        return bytes(std::integral_constant<std::size_t, 4>{});
    case TypeId::Double:
    case TypeId::Float2:
        return bytes(std::integral_constant<std::size_t, 8>{});
    case TypeId::Float3:
        return bytes(std::integral_constant<std::size_t, 12>{});
    case TypeId::Float4:
    case TypeId::Color:
    case TypeId::Quaternion:
    case TypeId::Translation:
        return bytes(std::integral_constant<std::size_t, 16>{});
    case TypeId::TQS:
        return bytes(std::integral_constant<std::size_t, 48>{});
    case TypeId::Matrix4x4:
    case TypeId::Mat44Float:
        return bytes(std::integral_constant<std::size_t, 64>{});
    case TypeId::String:
        return moveTexts(from, fromStride, to, toStride, frames);
    }
}

template <std::size_t size> void clearBytes(std::byte* to, std::size_t stride, std::size_t frames)
{
    for (std::size_t i = 0; i < frames; ++i)
        std::memset(to + i * stride, 0, size);
}

// What all rows share is there once.
std::size_t rowsOf(Plan const& plan, Place place)
{
    return place.stride == 0 ? 1 : plan.framesPerBlock;
}

// A kernel may leave an output as it is; what it was must not depend on the frames before.
void clearOutput(Step const& step, std::byte* to, std::size_t frames)
{
    std::size_t const stride = step.out.stride;
    switch (step.outExtent) {
    case 0:
        return;
    case 1:
        return clearBytes<1>(to, stride, frames);
    case 4:
        return clearBytes<4>(to, stride, frames);
    case 8:
        return clearBytes<8>(to, stride, frames);
    case 12:
        return clearBytes<12>(to, stride, frames);
    case 16:
        return clearBytes<16>(to, stride, frames);
    case 64:
        return clearBytes<64>(to, stride, frames);
    default:
        for (std::size_t i = 0; i < frames; ++i)
            std::memset(to + i * stride, 0, step.outExtent);
    }
}

}  // namespace

void moveRows(TypeId type, std::byte const* from, std::ptrdiff_t fromStride, std::byte* to,
              std::ptrdiff_t toStride, std::size_t frames)
{
    moveValues(type, from, fromStride, to, toStride, frames);
}

void Evaluator::Free::operator()(std::byte* arena) const
{
    ::operator delete(arena, kArenaAlignment);
}

Evaluator::Evaluator(Plan const& plan, runtime::LogService* log)
    : m_plan(plan),
      m_memory(static_cast<std::byte*>(::operator new(plan.arenaSize, kArenaAlignment))),
      m_arena(m_memory.get())
{
    m_services.log = log;
    std::memset(m_arena, 0, plan.arenaSize);
    for (Plan::Constant const& constant : plan.constants)
        for (std::size_t i = 0; i < rowsOf(plan, constant.place); ++i)
            std::memcpy(at(constant.place, i), plan.constantBytes.data() + constant.begin,
                        constant.size);
    // The texts are shared within the arena and not between threads, whose counts would collide.
    std::vector<String> shared;
    shared.reserve(plan.constantTexts.size());
    for (std::string const& text : plan.constantTexts)
        shared.emplace_back(std::string(text.data(), text.size()));
    for (Plan::Text const& text : plan.texts)
        for (std::size_t i = 0; i < rowsOf(plan, text.place); ++i)
            if (text.constant)
                ::new (at(text.place, i)) String(shared[*text.constant]);
            else
                ::new (at(text.place, i)) String();
    if (!plan.rowSteps.empty())
        m_rows = std::make_unique<RowEvaluation>(plan, m_arena);
}

Evaluator::~Evaluator()
{
    for (Plan::Text const& text : m_plan.texts)
        for (std::size_t i = 0; i < rowsOf(m_plan, text.place); ++i)
            std::destroy_at(reinterpret_cast<String*>(at(text.place, i)));
}

// A step is little work: for frames one by one it must not cost a call of its own.
[[gnu::always_inline]] inline void Evaluator::call(Step const& step,
                                                   std::span<std::int32_t const> frames,
                                                   runtime::EvaluationScope& scope)
{
    std::byte const* in = m_arena + step.in.offset;
    std::byte* out = m_arena + step.out.offset;
    if (step.solve != nullptr) {
        for (std::int32_t const frame : frames) {
            scope.setFrame(frame);
            step.solve(in, out);
            in += step.in.stride;
            out += step.out.stride;
        }
        return;
    }
    void* const workspace = m_arena + step.workspace;
    if (!m_isInitialised) {
        scope.setFrame(frames.front());
        step.init(in, workspace);
    }
    for (std::int32_t const frame : frames) {
        scope.setFrame(frame);
        step.solveWithWorkspace(in, workspace, out);
        in += step.in.stride;
        out += step.out.stride;
    }
}

[[gnu::always_inline]] inline void Evaluator::callBlock(Step const& step,
                                                        std::span<std::int32_t const> frames,
                                                        runtime::EvaluationScope& scope)
{
    Move const* const moves = m_plan.moves.data() + step.firstMove;
    for (std::size_t i = 0; i < step.moveCount; ++i)
        moveValues(moves[i].type, m_arena + moves[i].from.offset, moves[i].from.stride,
                   m_arena + moves[i].to.offset, moves[i].to.stride, frames.size());
    clearOutput(step, m_arena + step.out.offset, frames.size());
    if (step.shift != 0) [[unlikely]]
        callShifted(step, frames);
    else
        call(step, frames, scope);
}

[[gnu::noinline]] void Evaluator::callShifted(Step const& step,
                                              std::span<std::int32_t const> frames)
{
    m_shifted.clear();
    for (std::int32_t const frame : frames)
        m_shifted.push_back(shiftedFrame(frame, step.shift));
    runtime::LocalServiceTable const silence{};
    runtime::EvaluationScope scope(m_shifted.front(), &silence);
    call(step, m_shifted, scope);
}

// In a function of its own, so that steps for blocks keep what they need in registers.
[[gnu::noinline]] void Evaluator::evaluateRows(std::span<std::int32_t const> frames,
                                               runtime::EvaluationScope& scope)
{
    auto const call = [&](Step const& step) { callBlock(step, frames, scope); };
    m_rows->evaluate(frames, std::ref(call));
}

void Evaluator::evaluate(std::span<std::int32_t const> frames)
{
    if (frames.empty())
        return;
    runtime::EvaluationScope scope(frames.front(), &m_services);
    for (PlanSource const& source : m_plan.sources)
        if (source.kind == Source::Kind::frame)
            for (std::size_t i = 0; i < frames.size(); ++i) {
                std::int32_t const frame = shiftedFrame(frames[i], source.shift);
                std::memcpy(at(source.place, i), &frame, sizeof frame);
            }
    if (m_rows != nullptr)
        evaluateRows(frames, scope);
    else
        for (Step const& step : m_plan.steps)
            callBlock(step, frames, scope);
    m_isInitialised = true;
}

bool Evaluator::bindSource(std::size_t k, runtime::RowsOfPort rows)
{
    return m_rows != nullptr && m_rows->bindSource(k, rows);
}

bool Evaluator::bindOutput(std::size_t k, runtime::RowsOfPort rows)
{
    return m_rows != nullptr && m_rows->bindOutput(k, rows);
}

}  // namespace nodus::host
