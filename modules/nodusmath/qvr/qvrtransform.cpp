// Rotation orders: the functions and the table that other libraries link to.
#include "qvr/qvrtransform.h"

#include "qvr/rotation_order.h"

qvr::_vec4 qvr::CGRotationOrder::V2Q(_vec4 const& angles) const noexcept
{
    return quaternionOfAngles(order, angles);
}

qvr::_vec4 qvr::CGRotationOrder::Q2V(_vec4 const& quaternion) const noexcept
{
    return anglesOfQuaternion(order, quaternion);
}

std::int32_t const QvEulerAxis[12][3] = {
    {0, 1, 2}, {0, 1, 2}, {0, 2, 1}, {0, 2, 1}, {1, 2, 0}, {1, 2, 0},
    {1, 0, 2}, {1, 0, 2}, {2, 0, 1}, {2, 0, 1}, {2, 1, 0}, {2, 1, 0},
};
