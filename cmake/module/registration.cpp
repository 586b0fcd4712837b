// The registration records of a module's kernels, in the order of its catalogue.
#include "kernels.h"

#include <nodusmath/registration.h>

#define NODUS_KERNEL NODUS_REGISTER_KERNEL
#define NODUS_GENERATOR NODUS_REGISTER_GENERATOR
#include <kernels.def>
