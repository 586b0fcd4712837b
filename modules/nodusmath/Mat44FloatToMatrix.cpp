// Mat44FloatToMatrix: the transpose, bit for bit.
#include "kernels.h"
#include "ports.h"
#include "qvr/rotation_matrix.h"

using namespace nodusmath;

namespace {

Matrix4x4 mat44FloatToMatrix(Mat44Float const& matrix) noexcept
{
    Matrix4x4 result;
    qvr::transpose(matrix.lanes, &result.rows[0].x);
    return result;
}

}  // namespace

void NodusMat44FloatToMatrix_Solve(void const* in, void* out) noexcept
{
    solve<mat44FloatToMatrix>(in, out);
}
