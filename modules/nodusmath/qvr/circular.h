// Sine, cosine and the angle of a point in double, by additions, multiplications and divisions
// alone: the same bits on every processor, with every compiler and mathematics library.
#pragma once

namespace qvr {

struct SineAndCosine {
    double sine, cosine;
};

// What:   sine and cosine of an angle in radians.
// Range:  |angle| <= 2^20.
// Error:  1.8e-16.
// Edge:   0 gives exactly its zero and 1; an angle beyond the range, and NaN, give NaN.
SineAndCosine sinCos(double angle) noexcept;

// What:   the angle of the point (den, num) in radians, in [-pi, pi].
// Range:  magnitudes up to 2^1022, one of them 2^-1022 or above or both 0.
// Error:  5.6e-16, and 2.8e-16 in [-pi/2, pi/2].
// Edge:   the sign bit of num becomes the sign; two zeros give the zero of it, a zero over a
//         negative number pi; NaN, and two infinities, give NaN.
double arctangent2(double num, double den) noexcept;

}  // namespace qvr
