// The entry points of all kernels. Blocks are laid out as ports.h has it, each at a multiple of 16;
// input and output blocks do not overlap. Kernels may be called from any thread, report nothing and
// answer every input.
#pragma once

#include "entry_points.h"

extern "C" {

// The host's module loader calls these after loading and before unloading; both do nothing, since
// kernels are registered while the library is being loaded.
NODUS_API void nodusmath_loadModule() noexcept;
NODUS_API void nodusmath_unloadModule() noexcept;

#define NODUS_KERNEL NODUS_DECLARE_KERNEL
#define NODUS_GENERATOR NODUS_DECLARE_GENERATOR
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR

}  // extern "C"
