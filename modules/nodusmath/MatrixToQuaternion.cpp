// MatrixToQuaternion: the rotation of a matrix; its translation and fourth column are not looked
// at.
#include "fourlanes.h"
#include "kernels.h"
#include "ports.h"
#include "qvr/rotation_matrix.h"

using namespace nodusmath;

namespace {

Quaternion matrixToQuaternion(Matrix4x4 const& matrix) noexcept
{
    auto const [x, y, z, translation] = matrix.rows;
    return portOf<Quaternion>(
        qvr::quaternionOfRows({x.x, x.y, x.z}, {y.x, y.y, y.z}, {z.x, z.y, z.z}));
}

}  // namespace

void NodusMatrixToQuaternion_Solve(void const* in, void* out) noexcept
{
    solve<matrixToQuaternion>(in, out);
}
