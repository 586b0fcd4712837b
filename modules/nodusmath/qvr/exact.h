// What a program that includes these headers must not be built with, and what its compiler must not
// do to a product: results are promised to the bit.
#pragma once

#include <emmintrin.h>

#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__) ||           \
    defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || defined(__NO_SIGNED_ZEROS__)
#error "nodusmath: results are promised to the bit; build without -ffast-math or any part of it"
#endif

namespace qvr {

// A product that is rounded before anything is added to it. For a processor with fused operations
// g++ would otherwise make one rounding of the two, unless told -ffp-contract=off; an empty
// instruction that may have changed the product keeps them apart and costs nothing.
[[gnu::always_inline]] inline __m128 rounded(__m128 product) noexcept
{
#if defined(__FMA__) || defined(__FMA4__) || defined(__AVX512F__)
    asm("" : "+x"(product));
#endif
    return product;
}

}  // namespace qvr
