// RotateVector: a vector turned by a quaternion, which is not normalised. The w lane of a Float4
// passes through.
#include "fourlanes.h"
#include "kernels.h"
#include "ports.h"
#include "qvr/quaternion.h"

using namespace nodusmath;

namespace {

Float3 rotateTriple(Float3 const& vector, Quaternion const& rotation) noexcept
{
    return portOf<Float3>(qvr::rotatedXYZ(lanesOf(rotation), lanesOf(vector)));
}

Float4 rotateFour(Float4 const& vector, Quaternion const& rotation) noexcept
{
    return portOf<Float4>(qvr::rotated(lanesOf(rotation), lanesOf(vector)));
}

}  // namespace

void NodusRotateVector_Float3_Solve(void const* in, void* out) noexcept
{
    solve<rotateTriple>(in, out);
}
void NodusRotateVector_Float4_Solve(void const* in, void* out) noexcept
{
    solveLanesApart<rotateFour>(in, out);
}
