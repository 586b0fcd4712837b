// What every header here begins with: a program must not be built so that bits change, and a
// function of an instruction or two is one at every level of optimisation.
#pragma once

#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__) ||           \
    defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || defined(__NO_SIGNED_ZEROS__)
#error "nodusmath: results are promised to the bit; build without -ffast-math or any part of it"
#endif

#define QVR_INLINE [[gnu::always_inline]] inline
