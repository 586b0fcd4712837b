// How many threads may compute.
#pragma once

#include <chrono>
#include <cstddef>

namespace nodus::python {

// What kernels take for many rows, and graphs that are not told otherwise; 1 at first.
void setThreads(std::size_t threads);
std::size_t threadsSet();

// As many as are wanted, or 1 where they are no more: a process made by fork has lost those that
// TBB had started before, and would wait for them.
std::size_t threadsToUse(std::size_t wanted);

// Between two looks at signals.
inline constexpr std::chrono::milliseconds kPatience{50};

}  // namespace nodus::python
