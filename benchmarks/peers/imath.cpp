// Imath. Its matrices go by rows and multiply row vectors as ours do; its product is written in the
// order in which the factors are applied. Its quaternions have the scalar first and are converted.
#include "peer.h"

#include <Imath/ImathEuler.h>
#include <Imath/ImathMatrix.h>
#include <Imath/ImathMatrixAlgo.h>
#include <Imath/ImathQuat.h>
#include <Imath/ImathVec.h>

using namespace nodus::bench;

namespace {

using Imath::Eulerf;
using Imath::Quatf;
using V3 = Imath::V3f;
using V4 = Imath::V4f;
using M4 = Imath::M44f;
using Imath::V3f;
using Imath::V4f;
static_assert(sizeof(V3) == 12 && sizeof(V4) == 16 && sizeof(M4) == 64);

Quatf quatOf(V4 const& lanes) { return {lanes.w, lanes.x, lanes.y, lanes.z}; }
V4 lanesOf(Quatf const& q) { return {q.v.x, q.v.y, q.v.z, q.r}; }

std::vector<Peer> functions()
{
    return {
        peer("Add_Float3", [](V3 const& a, V3 const& b) { return a + b; }),
        peer("Add_Float4", [](V4 const& a, V4 const& b) { return a + b; }),
        peer("Add_Matrix4x4", [](M4 const& a, M4 const& b) { return a + b; }),
        peer("Mul_Matrix4x4", [](M4 const& a, M4 const& b) { return b * a; }),
        peer("DotProduct_Float3", [](V3 const& a, V3 const& b) { return a.dot(b); }),
        peer("DotProduct_Float4", [](V4 const& a, V4 const& b) { return a.dot(b); }),
        peer("CrossProduct_Float3", [](V3 const& a, V3 const& b) { return a.cross(b); }),
        peer("Length_Float3", [](V3 const& v) { return v.length(); }),
        peer("Normalize_Float3", [](V3 const& v) { return v.normalized(); }),
        peer("Normalize_Float4", [](V4 const& v) { return v.normalized(); }),
        peer("MatrixToMat44Float", [](M4 const& m) { return m.transposed(); }),
        peer("AlmostEqual_Matrix4x4",
             [](M4 const& a, M4 const& b, float tolerance) {
                 return a.equalWithAbsError(b, tolerance);
             }),
        peer("Mul_Quat", [](V4 const& a,
                            V4 const& b) { return lanesOf((quatOf(a) * quatOf(b)).normalized()); }),
        peer("Slerp_Quat",
             [](V4 const& a, V4 const& b, float t) {
                 return lanesOf(Imath::slerpShortestArc(quatOf(a), quatOf(b), t));
             }),
        peer("RotateVector_Float3",
             [](V3 const& v, V4 const& q) { return quatOf(q).rotateVector(v); }),
        peer("MatrixToQuaternion", [](M4 const& m) { return lanesOf(Imath::extractQuat(m)); }),
        peer("QuaternionToMatrix", [](V4 const& q) { return quatOf(q).toMatrix44(); }),
        peer("EulerToQuaternion order=0",
             [](V4 const& angles) {
                 return lanesOf(Eulerf(angles.x, angles.y, angles.z, Eulerf::XYZ).toQuat());
             }),
        peer("EulerToQuaternion order=2",
             [](V4 const& angles) {
                 return lanesOf(Eulerf(angles.x, angles.z, angles.y, Eulerf::XZY).toQuat());
             }),
        peer("QuaternionToEuler order=0",
             [](V4 const& q) {
                 Eulerf angles(Eulerf::XYZ);
                 angles.extract(quatOf(q));
                 return V4(angles.x, angles.y, angles.z, 0.0f);
             }),
    };
}

Library const kImath("Imath", functions());

}  // namespace
