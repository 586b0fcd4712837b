// The calling thread's evaluation: current frame and local services.
#include "nodus/runtime/EvaluationScope.h"
#include "Evaluation.h"
#include "nodus/runtime/CurrentFrame.h"
#include "nodus/runtime/LocalServiceTable.h"

namespace nodus::runtime {

namespace {

struct Evaluation {
    std::int32_t frame = 0;
    LocalServiceTable const* services = nullptr;
};

// Kernels ask once a call: initial-exec makes the answer one load, with no call to find the block.
__attribute__((tls_model("initial-exec"))) constinit thread_local Evaluation t_evaluation;

}  // namespace

LogService::~LogService() = default;

std::int32_t GetCurrentFrame() noexcept { return t_evaluation.frame; }

LocalServiceTable const* GetLocalServiceTable() noexcept { return t_evaluation.services; }

void setEvaluation(std::int32_t frame, LocalServiceTable const* services) noexcept
{
    t_evaluation = {frame, services};
}

EvaluationScope::EvaluationScope(std::int32_t frame, LocalServiceTable const* services) noexcept
    : m_frame(&t_evaluation.frame), m_outerFrame(t_evaluation.frame),
      m_outerServices(t_evaluation.services)
{
    t_evaluation = {frame, services};
}

EvaluationScope::~EvaluationScope() { t_evaluation = {m_outerFrame, m_outerServices}; }

}  // namespace nodus::runtime
