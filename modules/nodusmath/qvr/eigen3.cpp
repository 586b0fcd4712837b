// The eigenvalue that is farthest from the others by the characteristic polynomial, its vector as a
// null vector, and the two others by a rotation in the plane that is left: no step loses digits
// where eigenvalues are equal (after D. Eberly, "A robust eigensolver for 3x3 symmetric matrices",
// 2014, without its trigonometry). In double one step of iterative refinement follows, with
// residuals of twice the digits (T. Ogita and K. Aishima, "Iterative refinement for symmetric
// eigenvalue decomposition", Japan Journal of Industrial and Applied Mathematics 35, 2018).
#include "qvr/eigen3.h"

#include "qvr/closed_forms.h"

#include <algorithm>
#include <limits>
#include <type_traits>
#include <utility>

namespace qvr {

namespace {

struct Vector {
    double x, y, z;
};
constexpr double kInfinity = std::numeric_limits<double>::infinity();
using Matrix = SymmetricMatrix3<double>;

QVR_INLINE Vector operator*(double s, Vector v) noexcept { return {s * v.x, s * v.y, s * v.z}; }
QVR_INLINE Vector operator+(Vector a, Vector b) noexcept
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
QVR_INLINE Vector operator-(Vector a, Vector b) noexcept
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
QVR_INLINE double dot(Vector a, Vector b) noexcept { return a.x * b.x + a.y * b.y + a.z * b.z; }
QVR_INLINE Vector operator*(Matrix const& m, Vector v) noexcept
{
    return {m.xx * v.x + m.xy * v.y + m.xz * v.z, m.xy * v.x + m.yy * v.y + m.yz * v.z,
            m.xz * v.x + m.yz * v.y + m.zz * v.z};
}
QVR_INLINE Matrix operator*(double s, Matrix const& m) noexcept
{
    return {s * m.xx, s * m.xy, s * m.xz, s * m.yy, s * m.yz, s * m.zz};
}

// Of a matrix of trace 0: far is the eigenvalue away from the two others, low and high, and the
// vectors are in the same order.
struct Axes {
    double far, low, high;
    Vector ofFar, ofLow, ofHigh;
};

// A vector that a symmetric matrix of rank 2 takes to 0: the longest column of its adjugate, which
// is a multiple of v v^T.
QVR_INLINE Vector nullVector(Matrix const& m) noexcept
{
    double const xx = m.yy * m.zz - m.yz * m.yz, yy = m.xx * m.zz - m.xz * m.xz;
    double const zz = m.xx * m.yy - m.xy * m.xy, xy = m.xz * m.yz - m.xy * m.zz;
    double const xz = m.xy * m.yz - m.xz * m.yy, yz = m.xy * m.xz - m.yz * m.xx;
    // By an index, since no processor could foretell the way of a jump.
    Vector const columns[] = {{xx, xy, xz}, {xy, yy, yz}, {xz, yz, zz}};
    double const ofX = magnitude(xx), ofY = magnitude(yy), ofZ = magnitude(zz);
    int const ofXY = ofY > ofX, longest = ofZ > std::max(ofX, ofY) ? 2 : ofXY;
    return columns[longest];
}

// Half the distance of the eigenvalues of a plane, where half the difference of the diagonal and
// the coupling are given.
QVR_INLINE double halfSpan(double difference, double coupling) noexcept
{
    return squareRoot(difference * difference + coupling * coupling);
}

// Turns the vectors a and b of that plane into eigenvectors, the lower one first.
QVR_INLINE void turn(double difference, double coupling, double span, Vector& a, Vector& b) noexcept
{
    double const g = magnitude(difference) + span;
    double const perLength = 1 / squareRoot(2 * span * g);
    double const parts[] = {perLength * g, perLength * coupling};
    double const c = parts[difference < 0], s = parts[!(difference < 0)];
    Vector const low = c * a - s * b, high = s * a + c * b;
    a = low, b = high;
}

// For a trace of 0 and the sum of all squares over 6; that of far to ten digits, the others as far
// as rounding lets.
QVR_INLINE Axes axesOf(Matrix const& m, double squares) noexcept
{
    double const determinant = m.xx * (m.yy * m.zz - m.yz * m.yz) -
                               m.xy * (m.xy * m.zz - m.yz * m.xz) +
                               m.xz * (m.xy * m.yz - m.yy * m.xz);
    double const p = squareRoot(squares), perSquares = 1 / squares;
    double const ratio = 0.5 * magnitude(determinant) * (perSquares * perSquares) * p;
    Axes axes;
    axes.far = __builtin_copysign(p * closedForm::trisection<1>(std::min(ratio, 1.0)), determinant);
    Matrix const rest{m.xx - axes.far, m.xy, m.xz, m.yy - axes.far, m.yz, m.zz - axes.far};

    // T. Duff et al., "Building an orthonormal basis, revisited", Journal of Computer Graphics
    // Techniques 6, 2017, for a vector of any length. Right-handed, and it stays so.
    Vector const v = nullVector(rest);
    double const length = squareRoot(dot(v, v)), side = __builtin_copysign(1.0, v.z);
    double const sum = length + magnitude(v.z), k = 1 / (length * sum);
    axes.ofFar = (k * sum) * v;
    axes.ofLow = {1 - v.x * v.x * k, -v.x * v.y * k, -side * axes.ofFar.x};
    axes.ofHigh = {-side * v.x * v.y * k, side - side * v.y * v.y * k, -axes.ofFar.y};
    Vector const image = m * axes.ofHigh;
    double const low = dot(axes.ofLow, m * axes.ofLow), high = dot(axes.ofHigh, image);
    double const coupling = dot(axes.ofLow, image), difference = 0.5 * (high - low);
    double const span = halfSpan(difference, coupling);
    axes.low = 0.5 * (low + high) - span;
    axes.high = 0.5 * (low + high) + span;
    if (span > 0)
        turn(difference, coupling, span, axes.ofLow, axes.ofHigh);
    return axes;
}

// The nearest multiple of 2^-26, of numbers up to 2^24. Products of two such that are not above 1,
// and their sums while these are not above 2, are exact.
QVR_INLINE double coarse(double v) noexcept { return (v + 0x1.8p26) - 0x1.8p26; }
QVR_INLINE Vector coarse(Vector v) noexcept { return {coarse(v.x), coarse(v.y), coarse(v.z)}; }
QVR_INLINE Matrix coarse(Matrix const& m) noexcept
{
    return {coarse(m.xx), coarse(m.xy), coarse(m.xz), coarse(m.yy), coarse(m.yz), coarse(m.zz)};
}

// What rounding took off v - a - b.
QVR_INLINE double missing(double v, double a, double b) noexcept
{
    auto const first = errorFree::twoSum(v, -a), second = errorFree::twoSum(first.high, -b);
    return first.low + second.low;
}

// A vector in two parts, and what A v - lambda v is.
struct Refined {
    Vector v, high, low;
    double lambda;
    Vector residual;

    Refined(Matrix const& mHigh, Matrix const& mLow, Vector ofV, double ofLambda) noexcept
        : v(ofV), high(coarse(v)), low(v - high), lambda(ofLambda)
    {
        double const lambdaHigh = coarse(lambda), lambdaLow = lambda - lambdaHigh;
        residual = (mHigh * high - lambdaHigh * high) +
                   ((mHigh * low + mLow * v) - (lambdaHigh * low + lambdaLow * v));
        lambda += dot(v, residual);
    }
    // By how much the square of the length is not 1.
    double excess() const noexcept
    {
        return (dot(high, high) - 1) + (2 * dot(high, low) + dot(low, low));
    }
};
QVR_INLINE double twofoldDot(Refined const& a, Refined const& b) noexcept
{
    return dot(a.high, b.high) + (dot(a.high, b.low) + dot(a.low, b.v));
}

// Brings the vectors' errors from some units in the last place to half of one: a, b, c become
// a + (what they lack of unit length) a + (what they lack of orthogonality and of the directions
// that the matrix leaves) (b, c). Says whether they were as near as that takes.
bool refine(Matrix const& m, Vector const& lowDiagonal, int size, bool isLast, Axes& axes) noexcept
{
    // Divided by 2^(size + 4) matrix and eigenvalues are below 1.
    double const reduce = errorFree::powerOfTwo(-size - 4),
                 enlarge = errorFree::powerOfTwo(size + 4);
    Matrix const small = reduce * m, high = coarse(small);
    Matrix const low{small.xx - high.xx + reduce * lowDiagonal.x,
                     small.xy - high.xy,
                     small.xz - high.xz,
                     small.yy - high.yy + reduce * lowDiagonal.y,
                     small.yz - high.yz,
                     small.zz - high.zz + reduce * lowDiagonal.z};
    Refined const a(high, low, axes.ofFar, reduce * axes.far);
    Refined const b(high, low, axes.ofLow, reduce * axes.low);
    Refined const c(high, low, axes.ofHigh, reduce * axes.high);
    axes.far = enlarge * a.lambda, axes.low = enlarge * b.lambda, axes.high = enlarge * c.lambda;

    // In the plane of b and c the eigenvalues may be equal.
    double const bc = twofoldDot(b, c), off = 0.5 * (dot(b.v, c.residual) + dot(c.v, b.residual));
    double const gap = c.lambda - b.lambda;
    if (!isLast && magnitude(off) > 0x1p-28 * gap) {
        turn(0.5 * gap, off, halfSpan(0.5 * gap, off), axes.ofLow, axes.ofHigh);
        return false;
    }
    double const turned = magnitude(off) < 0x1p-28 * gap ? off / gap : 0;
    double const perB = 1 / (b.lambda - a.lambda), perC = 1 / (c.lambda - a.lambda);
    axes.ofFar = a.v + (-0.5 * a.excess() * a.v - (perB * dot(b.v, a.residual)) * b.v -
                        (perC * dot(c.v, a.residual)) * c.v);
    axes.ofLow = b.v + (-0.5 * b.excess() * b.v + (perB * dot(a.v, b.residual)) * a.v -
                        (0.5 * bc + turned) * c.v);
    axes.ofHigh = c.v + (-0.5 * c.excess() * c.v + (perC * dot(a.v, c.residual)) * a.v -
                         (0.5 * bc - turned) * b.v);
    return true;
}

template <typename T> void put(Eigensystem3<T>& to, int i, double value, Vector v) noexcept
{
    to.values[i] = static_cast<T>(value);
    to.vectors[i][0] = static_cast<T>(v.x);
    to.vectors[i][1] = static_cast<T>(v.y);
    to.vectors[i][2] = static_cast<T>(v.z);
}

// The axes of a diagonal matrix.
template <typename T> Eigensystem3<T> sorted(SymmetricMatrix3<T> const& m) noexcept
{
    Eigensystem3<T> result{{m.xx, m.yy, m.zz}, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    auto const order = [&result](int i, int j) {
        if (!(result.values[j] < result.values[i]))
            return;
        // One of the two is turned round, which keeps them right-handed.
        std::swap(result.values[i], result.values[j]);
        std::swap(result.vectors[i], result.vectors[j]);
        for (T& lane : result.vectors[i])
            lane = 0 - lane;
    };
    order(0, 1), order(1, 2), order(0, 1);
    return result;
}

template <typename T> Eigensystem3<T> nothing() noexcept
{
    constexpr T kNone = std::numeric_limits<T>::quiet_NaN();
    return {{kNone, kNone, kNone},
            {{kNone, kNone, kNone}, {kNone, kNone, kNone}, {kNone, kNone, kNone}}};
}

template <typename T> Eigensystem3<T> solve(SymmetricMatrix3<T> const& given) noexcept;

// By way of a matrix times a power of two.
[[gnu::cold]] Eigensystem3<double> solveScaled(Matrix const& given, double largest) noexcept
{
    int const size = std::clamp(errorFree::exponentOf(largest), -1022, 1022);
    double const scale = errorFree::powerOfTwo(-size), unscale = errorFree::powerOfTwo(size);
    Eigensystem3<double> result = solve(scale * given);
    for (double& value : result.values)
        value *= unscale;
    return result;
}

template <typename T> Eigensystem3<T> solve(SymmetricMatrix3<T> const& given) noexcept
{
    Matrix m{given.xx, given.xy, given.xz, given.yy, given.yz, given.zz};
    if constexpr (std::is_same_v<T, double>) {
        double const largest =
            std::max(std::max({magnitude(m.xx), magnitude(m.yy), magnitude(m.zz)}),
                     std::max({magnitude(m.xy), magnitude(m.yz), magnitude(m.xz)}));
        if (largest < 0x1p-100 ? largest > 0 : largest > 0x1p100 && largest < kInfinity)
            return solveScaled(given, largest);
    }
    // Less a multiple of the unit matrix the trace is 0. What is taken off is a sum of two.
    double const mean = (m.xx + m.yy + m.zz) * (1.0 / 3);
    m.xx -= mean, m.yy -= mean, m.zz -= mean;
    double const rest = (m.xx + m.yy + m.zz) * (1.0 / 3);
    m.xx -= rest, m.yy -= rest, m.zz -= rest;

    double const coupling = m.xy * m.xy + m.xz * m.xz + m.yz * m.yz;
    double const squares = (m.xx * m.xx + m.yy * m.yy + m.zz * m.zz + 2 * coupling) * (1.0 / 6);
    if (!(coupling > 0x1p-400))
        return coupling >= 0 && mean - mean == 0 ? sorted(given) : nothing<T>();
    Axes axes = axesOf(m, squares);
    if constexpr (std::is_same_v<T, double>) {
        Vector const low{missing(given.xx, mean, rest), missing(given.yy, mean, rest),
                         missing(given.zz, mean, rest)};
        int const size = errorFree::exponentOf(squares) / 2;
        if (!refine(m, low, size, false, axes))
            refine(m, low, size, true, axes);
    }
    Eigensystem3<T> result;
    int const first = axes.far < axes.low;
    put(result, first, (axes.low + rest) + mean, axes.ofLow);
    put(result, first + 1, (axes.high + rest) + mean, axes.ofHigh);
    put(result, 2 * !first, (axes.far + rest) + mean, axes.ofFar);
    return result;
}

}  // namespace

Eigensystem3<float> eigensystem(SymmetricMatrix3<float> const& matrix) noexcept
{
    return solve(matrix);
}
Eigensystem3<double> eigensystem(SymmetricMatrix3<double> const& matrix) noexcept
{
    return solve(matrix);
}

}  // namespace qvr
