// What the runtime itself does to the calling thread's evaluation.
#pragma once

#include "nodus/runtime/LocalServiceTable.h"

#include <cstdint>

namespace nodus::runtime {

void setEvaluation(std::int32_t frame, LocalServiceTable const* services) noexcept;

}  // namespace nodus::runtime
