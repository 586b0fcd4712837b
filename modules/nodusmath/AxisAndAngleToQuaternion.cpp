// AxisAndAngleToQuaternion: the rotation by an angle about an axis, whose length stays in the
// vector part; the w lane of a Float4 axis adds to the 1 that the cosine is multiplied by.
#include "fourlanes.h"
#include "kernels.h"
#include "ports.h"
#include "qvr/quaternion.h"

using namespace nodusmath;

namespace {

template <typename T> Quaternion axisAndAngleToQuaternion(T const& axis, Float angle) noexcept
{
    return portOf<Quaternion>(qvr::fromAxisAndAngle(lanesOf(axis), qvr::broadcast(angle)));
}

}  // namespace

void NodusAxisAndAngleToQuaternion_Float3_Solve(void const* in, void* out) noexcept
{
    solveLanesApart<axisAndAngleToQuaternion<Float3>>(in, out);
}
void NodusAxisAndAngleToQuaternion_Float4_Solve(void const* in, void* out) noexcept
{
    solveLanesApart<axisAndAngleToQuaternion<Float4>>(in, out);
}
