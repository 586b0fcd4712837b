// QuaternionToMatrix: the matrix of a unit quaternion, without translation. A quaternion of another
// length gives no rotation matrix.
#include "fourlanes.h"
#include "kernels.h"
#include "ports.h"
#include "qvr/rotation_matrix.h"

using namespace nodusmath;

namespace {

Matrix4x4 quaternionToMatrix(Quaternion const& value) noexcept
{
    qvr::RotationRows const rows(lanesOf(value));
    return {{portOf<Float4>(rows.row<0>()), portOf<Float4>(rows.row<1>()),
             portOf<Float4>(rows.row<2>()), portOf<Float4>(qvr::kIdentity)}};
}

}  // namespace

void NodusQuaternionToMatrix_Solve(void const* in, void* out) noexcept
{
    solveByKernel<quaternionToMatrix>(in, out);
}
