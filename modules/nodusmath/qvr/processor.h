// What every operation of this library comes down to: four lanes, integers beside them, and what
// C++ leaves open or undefined about one lane. For x86-64 by its instructions, which x86_64.h alone
// names; for every other processor by the compiler's vectors and plain C++, with the same bits at
// every edge.
#pragma once

// QVR_COMPILER_VECTORS chooses the second on x86-64 as well.
#if defined(__x86_64__) && !defined(QVR_COMPILER_VECTORS)
#include "x86_64.h"
#else
#include "compiler_vectors.h"
#endif
