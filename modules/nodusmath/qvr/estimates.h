// Where 1 / v and 1 / sqrt(v) come from when a kernel starts from an estimate: the processor's
// instruction, or in a portable build exact operations that answer alike at the edges.
#pragma once

#include "vec4.h"

namespace qvr {

// Subnormal numbers become the zero of their sign, as the estimate instructions take and give them.
QVR_INLINE _vec4 withoutSubnormals(_vec4 v) noexcept
{
    _vec4 const isOther = notLess(magnitude(v), broadcast(0x1p-126f));
    return bitAnd(v, bitOr(isOther, kSignBits));
}
QVR_INLINE float withoutSubnormals(float v) noexcept
{
    return magnitude(v) < 0x1p-126f ? __builtin_copysignf(0, v) : v;
}

// Correctly rounded, the same bits on every processor. NaN, zeros and infinities come out where the
// instructions give them: a zero or subnormal gives the infinity of its sign, a negative number has
// no root, and what would be subnormal is a zero.
QVR_INLINE _vec4 exactReciprocal(_vec4 v) noexcept
{
    return withoutSubnormals(broadcast(1) / withoutSubnormals(v));
}
QVR_INLINE _vec4 exactReciprocalSquareRoot(_vec4 v) noexcept
{
    return broadcast(1) / squareRoot(withoutSubnormals(v));
}
QVR_INLINE float exactReciprocalSquareRoot(float v) noexcept
{
    return 1 / squareRoot(withoutSubnormals(v));
}

#if defined(NODUSMATH_PORTABLE) || !defined(QVR_HAS_ESTIMATES)
QVR_INLINE _vec4 reciprocalEstimate(_vec4 v) noexcept { return exactReciprocal(v); }
QVR_INLINE _vec4 reciprocalSquareRootEstimate(_vec4 v) noexcept
{
    return exactReciprocalSquareRoot(v);
}
QVR_INLINE float reciprocalSquareRootEstimate(float v) noexcept
{
    return exactReciprocalSquareRoot(v);
}
#else
QVR_INLINE _vec4 reciprocalEstimate(_vec4 v) noexcept { return estimatedReciprocal(v); }
QVR_INLINE _vec4 reciprocalSquareRootEstimate(_vec4 v) noexcept
{
    return estimatedReciprocalRoot(v);
}
QVR_INLINE float reciprocalSquareRootEstimate(float v) noexcept
{
    return estimatedReciprocalRoot(v);
}
#endif

}  // namespace qvr
