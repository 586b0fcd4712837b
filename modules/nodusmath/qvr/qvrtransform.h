// The rotation order as a value of its own, for callers that hold one, and the table of the axes.
// Both are functions and data of the library; what they do is in rotation_order.h.
#pragma once

#include "vec4.h"

#include <cstdint>

#define QVR_EXPORT [[gnu::visibility("default")]]

namespace qvr {

struct QVR_EXPORT CGRotationOrder {
    std::int32_t order;  // 0 to 12

    // Three angles in radians, in x, y and z, to the quaternion, and back.
    _vec4 V2Q(_vec4 const& angles) const noexcept;
    _vec4 Q2V(_vec4 const& quaternion) const noexcept;
};

}  // namespace qvr

// The axes of orders 0 to 11 in the order in which they are applied: 0 for X, 1 for Y, 2 for Z.
QVR_EXPORT extern std::int32_t const QvEulerAxis[12][3];
