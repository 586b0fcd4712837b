// What the sources of a module include: its entry points, declared from the catalogue's list, and
// the ports that its functions take.
#pragma once

#include <nodusmath/entry_points.h>
#include <nodusmath/ports.h>

extern "C" {

#define NODUS_KERNEL NODUS_DECLARE_KERNEL
#define NODUS_GENERATOR NODUS_DECLARE_GENERATOR
#include <kernels.def>
#undef NODUS_KERNEL
#undef NODUS_GENERATOR

}  // extern "C"
