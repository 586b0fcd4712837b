// An arm of three joints that is waved too far: every joint keeps its limits.
#include <qvr/rotation_limits.h>
#include <qvr/rotation_order.h>
#include <qvr/rotation_space.h>

#include <cstdio>

using namespace qvr;
using namespace qvr::rotationOrder;

int main()
{
    // The shoulder twists and swings; the elbow is a hinge about Z, set a little back; the wrist
    // nods about Y and Z. Bones lie along X.
    TwistSwingLimits const shoulder{{-0.8, 1.2}, 1.0, 1.6};
    RotationSpace const elbow{kYZX, rotationOf(kXYZ, {0, 0, 0.1}), {}, {false, false, true}, {}};
    AngleLimits const hinge{elbow.order, {0, 0}, {0, 0}, {0, 2.4}};
    AngleLimits const wrist{kZXY, {0, 0}, {-0.4, 0.4}, {-1.2, 1.2}};
    double const bones[] = {0.30, 0.26, 0.08};  // metres

    for (int frame = 0; frame <= 6; ++frame) {
        double const wave = 0.5 * frame;
        Quatd const wanted = rotationOf(kXYZ, {0.2, 0.3 * wave, wave});
        Quatd const bend = elbow.nearest(rotationOf(kXYZ, {0, 0.1, wave}));
        Quatd const joints[] = {shoulder.soften(wanted, 0.3),
                                elbow.outer(hinge.nearest(elbow.inner(bend))),
                                wrist.nearest(rotationOf(kXYZ, {0.1, -wave, wave}))};
        Vec3d hand{};
        Quatd turn;
        for (int i = 0; i < 3; ++i) {
            turn = turn * joints[i];
            Vec3d const bone = rotated(turn, {bones[i], 0, 0});
            hand = {hand.x + bone.x, hand.y + bone.y, hand.z + bone.z};
        }
        std::printf("frame %d: hand at (%6.3f, %6.3f, %6.3f), shoulder %.3f rad past its cone\n",
                    frame, hand.x, hand.y, hand.z, shoulder.outsideBy(wanted));
    }
}
