// The registration records of all kernels, and the hooks of the host's module loader.
#include "kernels.h"
#include "registration.h"

#define NODUS_KERNEL NODUS_REGISTER_KERNEL
#define NODUS_GENERATOR NODUS_REGISTER_GENERATOR
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR

void nodusmath_loadModule() noexcept {}
void nodusmath_unloadModule() noexcept {}
