// The frame that is being evaluated, as kernels ask for it.
#pragma once

#include "nodus/Export.h"

#include <cstdint>

namespace nodus::runtime {

// The frame of the innermost EvaluationScope of the calling thread; 0 outside of any.
NODUS_API std::int32_t GetCurrentFrame() noexcept;

}  // namespace nodus::runtime
