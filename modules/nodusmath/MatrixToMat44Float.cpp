// MatrixToMat44Float: the transpose, bit for bit.
#include "kernels.h"
#include "ports.h"
#include "qvr/rotation_matrix.h"

using namespace nodusmath;

namespace {

Mat44Float matrixToMat44Float(Matrix4x4 const& matrix) noexcept
{
    Mat44Float result;
    qvr::transpose(&matrix.rows[0].x, result.lanes);
    return result;
}

}  // namespace

void NodusMatrixToMat44Float_Solve(void const* in, void* out) noexcept
{
    solve<matrixToMat44Float>(in, out);
}
