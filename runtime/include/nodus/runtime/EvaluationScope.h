// What a host opens around its kernel calls: the frame and the services that they see.
#pragma once

#include "nodus/Export.h"
#include "nodus/runtime/LocalServiceTable.h"

#include <cstdint>

namespace nodus::runtime {

// From construction to destruction, kernels called on this thread see this frame and these
// services; then the scope around it holds again. Scopes of one thread end in reverse order (as
// local objects do), and a scope ends on the thread that opened it. The host keeps the table, which
// may be null, alive as long as the scope.
class NODUS_API EvaluationScope {
public:
    EvaluationScope(std::int32_t frame, LocalServiceTable const* services) noexcept;
    ~EvaluationScope();

    // Moves this evaluation on to another frame; only for the innermost scope of the thread.
    void setFrame(std::int32_t frame) noexcept { *m_frame = frame; }

    EvaluationScope(EvaluationScope const&) = delete;
    EvaluationScope& operator=(EvaluationScope const&) = delete;

private:
    std::int32_t* m_frame;  // what GetCurrentFrame() reads on this thread
    std::int32_t m_outerFrame;
    LocalServiceTable const* m_outerServices;
};

}  // namespace nodus::runtime
