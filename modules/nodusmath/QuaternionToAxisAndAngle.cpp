// QuaternionToAxisAndAngle: the unit axis and the angle in [0, 2 pi]. The axis is NaN where the
// vector part is zero, the angle where |w| > 1.
#include "fourlanes.h"
#include "kernels.h"
#include "ports.h"
#include "qvr/quaternion.h"

using namespace nodusmath;

namespace {

template <typename T>
void quaternionToAxisAndAngle(Quaternion const& rotation, T& axis, Float& angle) noexcept
{
    qvr::_vec4 const q = lanesOf(rotation);
    axis = portOf<T>(qvr::axisOf(q));
    angle = qvr::lane0(qvr::angleOf(q));
}

}  // namespace

void NodusQuaternionToAxisAndAngle_Float3_Solve(void const* in, void* out) noexcept
{
    solve<quaternionToAxisAndAngle<Float3>>(in, out);
}
void NodusQuaternionToAxisAndAngle_Float4_Solve(void const* in, void* out) noexcept
{
    solve<quaternionToAxisAndAngle<Float4>>(in, out);
}
