// Where 1 / v and 1 / sqrt(v) come from when a kernel starts from an estimate: the processor's
// instruction, or in a portable build exact operations that answer alike at the edges.
#pragma once

#include <emmintrin.h>

namespace qvr {

// Subnormal lanes become the zero of their sign, as the estimate instructions take and give them.
[[gnu::always_inline]] inline __m128 withoutSubnormals(__m128 v) noexcept
{
    __m128 const signs = _mm_set1_ps(-0.0f);
    __m128 const isOther = _mm_cmpnlt_ps(_mm_andnot_ps(signs, v), _mm_set1_ps(0x1p-126f));
    return _mm_and_ps(v, _mm_or_ps(isOther, signs));
}

// Correctly rounded, the same bits on every processor. NaN, zeros and infinities come out where the
// instructions give them: a zero or subnormal gives the infinity of its sign, a negative number has
// no root, and what would be subnormal is a zero.
[[gnu::always_inline]] inline __m128 exactReciprocal(__m128 v) noexcept
{
    return withoutSubnormals(_mm_div_ps(_mm_set1_ps(1.0f), withoutSubnormals(v)));
}
[[gnu::always_inline]] inline __m128 exactReciprocalSquareRoot(__m128 v) noexcept
{
    return _mm_div_ps(_mm_set1_ps(1.0f), _mm_sqrt_ps(withoutSubnormals(v)));
}

#ifdef NODUSMATH_PORTABLE
[[gnu::always_inline]] inline __m128 reciprocalLanes(__m128 v) noexcept
{
    return exactReciprocal(v);
}
[[gnu::always_inline]] inline __m128 reciprocalSquareRootLanes(__m128 v) noexcept
{
    return exactReciprocalSquareRoot(v);
}
[[gnu::always_inline]] inline float reciprocalSquareRootLane0(__m128 v) noexcept
{
    // What lies in the other lanes is nobody's number.
    return _mm_cvtss_f32(exactReciprocalSquareRoot(_mm_shuffle_ps(v, v, 0)));
}
#else
[[gnu::always_inline]] inline __m128 reciprocalLanes(__m128 v) noexcept { return _mm_rcp_ps(v); }
[[gnu::always_inline]] inline __m128 reciprocalSquareRootLanes(__m128 v) noexcept
{
    return _mm_rsqrt_ps(v);
}
[[gnu::always_inline]] inline float reciprocalSquareRootLane0(__m128 v) noexcept
{
    return _mm_cvtss_f32(_mm_rsqrt_ss(v));
}
#endif

}  // namespace qvr
