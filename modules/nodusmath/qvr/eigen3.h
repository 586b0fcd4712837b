// Eigenvalues and eigenvectors of symmetric 3x3 matrices, in float and double.
//
// Error:  |A v - lambda v| is at most 1.5 epsilon |A|, and |V^T V - 1| at most 1.5 epsilon, where
//         epsilon is 2^-52, or 2^-23 for float, and |A| the largest singular value. A subnormal
//         eigenvalue has subnormal units.
// Edge:   equal eigenvalues have any orthonormal vectors of their space; a diagonal matrix its own
//         numbers and axes, without rounding; a NaN or an infinity gives NaN everywhere. No matrix
//         is too large or too small; a value beyond the largest number is an infinity.
// Method: a root of the characteristic polynomial, a null vector and a rotation (D. Eberly, "A
//         robust eigensolver for 3x3 symmetric matrices", 2014), in double followed by iterative
//         refinement (T. Ogita, K. Aishima, 2018).
#pragma once

namespace qvr {

template <typename T> struct SymmetricMatrix3 {
    T xx, xy, xz, yy, yz, zz;
};

template <typename T> struct Eigensystem3 {
    T values[3];      // ascending
    T vectors[3][3];  // vectors[i] belongs to values[i]; of length 1, orthogonal, right-handed
};

Eigensystem3<float> eigensystem(SymmetricMatrix3<float> const& matrix) noexcept;
Eigensystem3<double> eigensystem(SymmetricMatrix3<double> const& matrix) noexcept;

}  // namespace qvr
