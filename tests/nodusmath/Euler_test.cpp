// The rotation orders that other libraries link to: functions and table are those of the kernels.
#include "support/kernel_call.h"

#include "qvr/qvrtransform.h"

#include <gtest/gtest.h>

#include <string>

using namespace nodus::test;

TEST(RotationOrder, ExportedFunctionsAndTableAreThoseOfTheKernels)
{
    Float4 const angles = {0.5f, -1, 2, 3};
    Quaternion const q = {0.6f, 0, 0, 0.8f};
    for (Int32 order = -1; order <= 13; ++order) {
        qvr::CGRotationOrder const rotationOrder{order};
        EXPECT_EQ(bits(rotationOrder.V2Q(qvr::load(&angles.x))),
                  bits(call<Quaternion>(NodusEulerToQuaternion_Solve, angles, order)));
        EXPECT_EQ(bits(rotationOrder.Q2V(qvr::load(&q.x))),
                  bits(call<Float4>(NodusQuaternionToEuler_Solve, q, order)));
    }
    std::string axes;
    for (auto const& ofOrder : QvEulerAxis)
        for (std::int32_t const axis : ofOrder)
            axes += "XYZ"[axis];
    EXPECT_EQ(axes, "XYZXYZXZYXZYYZXYZXYXZYXZZXYZXYZYXZYX");
}
