// Mul: a * b, lane by lane for vectors; the product of matrices and of rotations. Integers wrap
// around in their width.
#include "fourlanes.h"
#include "kernels.h"
#include "lanewise.h"
#include "ports.h"
#include "qvr/quaternion.h"

using namespace nodusmath;

namespace {

template <typename T> T multiply(T const& a, T const& b) noexcept
{
    // Narrowed in one expression with the product: bytes get the processor's own multiplication.
    return lanewise(a, b, [](auto x, auto y) { return static_cast<decltype(x)>(x * y); });
}

// Row i of the result is the rows of a weighted by row i of b, summed from the left: as transforms
// of row vectors, b is applied first.
Float4 weightedRows(Float4 const& weights, Matrix4x4 const& a) noexcept
{
    using namespace qvr;
    _vec4 const w = load(&weights.x);
    _vec4 sum = broadcastLane<0>(w) * load(&a.rows[0].x);
    sum = sum + broadcastLane<1>(w) * load(&a.rows[1].x);
    sum = sum + broadcastLane<2>(w) * load(&a.rows[2].x);
    sum = sum + broadcastLane<3>(w) * load(&a.rows[3].x);
    Float4 row;
    store(&row.x, sum);
    return row;
}

Matrix4x4 multiplyMatrices(Matrix4x4 const& a, Matrix4x4 const& b) noexcept
{
    return {{weightedRows(b.rows[0], a), weightedRows(b.rows[1], a), weightedRows(b.rows[2], a),
             weightedRows(b.rows[3], a)}};
}

// The rotation b and then a, as a unit quaternion.
Quaternion multiplyRotations(Quaternion const& a, Quaternion const& b) noexcept
{
    return portOf<Quaternion>(qvr::normalizeFast(qvr::hamiltonProduct(lanesOf(a), lanesOf(b))));
}

}  // namespace

void NodusMul_Float_Solve(void const* in, void* out) noexcept { solve<multiply<Float>>(in, out); }
void NodusMul_Float2_Solve(void const* in, void* out) noexcept { solve<multiply<Float2>>(in, out); }
void NodusMul_Float3_Solve(void const* in, void* out) noexcept { solve<multiply<Float3>>(in, out); }
void NodusMul_Float4_Solve(void const* in, void* out) noexcept { solve<multiply<Float4>>(in, out); }
void NodusMul_Int32_Solve(void const* in, void* out) noexcept { solve<multiply<Int32>>(in, out); }
void NodusMul_Matrix4x4_Solve(void const* in, void* out) noexcept
{
    solveByKernel<multiplyMatrices>(in, out);
}
void NodusMul_Quat_Solve(void const* in, void* out) noexcept { solve<multiplyRotations>(in, out); }
void NodusMul_UInt32_Solve(void const* in, void* out) noexcept { solve<multiply<UInt32>>(in, out); }
void NodusMul_UInt8_Solve(void const* in, void* out) noexcept { solve<multiply<UInt8>>(in, out); }
