// The registration records of all kernels, and the hooks of the host's module loader.
#include "kernels.h"

#include "nodus/runtime/NodusAutoSymbol.h"

using nodus::runtime::NodusAutoSymbol;

// Objects of one translation unit are built from top to bottom and destroyed in reverse: the order
// of the list is the order of registration.
#define NODUS_KERNEL(name)                                                                         \
    static NodusAutoSymbol ___##name(#name, "(*,*)", reinterpret_cast<void const*>(&name));
#define NODUS_GENERATOR(name)                                                                      \
    static NodusAutoSymbol ___##name(#name, "(*,*,*)", reinterpret_cast<void const*>(&name));
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR

void nodusmath_loadModule() noexcept {}
void nodusmath_unloadModule() noexcept {}
