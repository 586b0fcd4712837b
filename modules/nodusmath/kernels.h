// The entry points of all kernels. Blocks are laid out as ports.h has it, each at a multiple of 16;
// input and output blocks do not overlap. Kernels may be called from any thread, report nothing and
// answer every input.
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

extern "C" {

// The host's module loader calls these after loading and before unloading; both do nothing, since
// kernels are registered while the library is being loaded.
NODUS_API void nodusmath_loadModule() noexcept;
NODUS_API void nodusmath_unloadModule() noexcept;

#define NODUS_KERNEL(name) NODUS_ENTRY void name(void const* in, void* out) noexcept;
#define NODUS_GENERATOR(name)                                                                      \
    NODUS_ENTRY void name(void const* in, void* workspace, void* out) noexcept;
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR

}  // extern "C"
