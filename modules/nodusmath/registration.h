// Registering kernels: a list of them, kernels.def, is included in one source file where
// NODUS_KERNEL and NODUS_GENERATOR are these.
//
// Objects of one translation unit are built from top to bottom and destroyed in reverse: the order
// of the list is the order of registration.
#pragma once

#include "nodus/runtime/NodusAutoSymbol.h"

#define NODUS_REGISTER(name, signature)                                                            \
    static nodus::runtime::NodusAutoSymbol ___##name(#name, signature,                             \
                                                     reinterpret_cast<void const*>(&name));
#define NODUS_REGISTER_KERNEL(name) NODUS_REGISTER(name, "(*,*)")
#define NODUS_REGISTER_GENERATOR(name) NODUS_REGISTER(name, "(*,*,*)")
