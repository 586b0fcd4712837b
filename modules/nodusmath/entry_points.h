// Declaring entry points: a list of kernels, kernels.def, is included where NODUS_KERNEL and
// NODUS_GENERATOR are these.
#pragma once

#include "nodus/Export.h"

// Over rows, a kernel is one loop with nothing called from it that could be inlined, compiled for
// each of these processors: the best that runs here is chosen while the library is being loaded.
#if defined(NODUS_ENTRY)
#elif !defined(NODUS_ROWS)
#define NODUS_ENTRY NODUS_API
#elif defined(__clang__) || !defined(__x86_64__)
#define NODUS_ENTRY __attribute__((flatten))
#else
#define NODUS_ENTRY                                                                                \
    __attribute__((flatten, target_clones("default", "arch=x86-64-v3", "arch=x86-64-v4")))
#endif

#define NODUS_DECLARE_KERNEL(name) NODUS_ENTRY void name(void const* in, void* out) noexcept;
#define NODUS_DECLARE_GENERATOR(name)                                                              \
    NODUS_ENTRY void name(void const* in, void* workspace, void* out) noexcept;
