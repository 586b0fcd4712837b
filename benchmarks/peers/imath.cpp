// Imath. Its matrices go by rows and multiply row vectors as ours do; its product is written in the
// order in which the factors are applied. Its quaternions have the scalar first and are converted.
#include "peer.h"

#include <Imath/ImathEuler.h>
#include <Imath/ImathMatrix.h>
#include <Imath/ImathMatrixAlgo.h>
#include <Imath/ImathQuat.h>
#include <Imath/ImathVec.h>

namespace nodus::bench {

namespace {

using Imath::Eulerf;
using Imath::M44f;
using Imath::Quatf;
using Imath::V3f;
using Imath::V4f;
static_assert(sizeof(V3f) == 12 && sizeof(V4f) == 16 && sizeof(M44f) == 64);

constexpr char const* kName = "Imath";

Quatf quatOf(V4f const& lanes) { return {lanes.w, lanes.x, lanes.y, lanes.z}; }
V4f lanesOf(Quatf const& q) { return {q.v.x, q.v.y, q.v.z, q.r}; }

}  // namespace

std::vector<Peer> imathPeers()
{
    return {
        peer(kName, "NodusAdd_Float3_Solve", [](V3f const& a, V3f const& b) { return a + b; }),
        peer(kName, "NodusAdd_Float4_Solve", [](V4f const& a, V4f const& b) { return a + b; }),
        peer(kName, "NodusAdd_Matrix4x4_Solve", [](M44f const& a, M44f const& b) { return a + b; }),
        peer(kName, "NodusMul_Matrix4x4_Solve", [](M44f const& a, M44f const& b) { return b * a; }),
        peer(kName, "NodusDotProduct_Float3_Solve",
             [](V3f const& a, V3f const& b) { return a.dot(b); }),
        peer(kName, "NodusDotProduct_Float4_Solve",
             [](V4f const& a, V4f const& b) { return a.dot(b); }),
        peer(kName, "NodusCrossProduct_Float3_Solve",
             [](V3f const& a, V3f const& b) { return a.cross(b); }),
        peer(kName, "NodusLength_Float3_Solve", [](V3f const& v) { return v.length(); }),
        peer(kName, "NodusNormalize_Float3_Solve", [](V3f const& v) { return v.normalized(); }),
        peer(kName, "NodusNormalize_Float4_Solve", [](V4f const& v) { return v.normalized(); }),
        peer(kName, "NodusMatrixToMat44Float_Solve", [](M44f const& m) { return m.transposed(); }),
        peer(kName, "NodusAlmostEqual_Matrix4x4_Solve",
             [](M44f const& a, M44f const& b, float tolerance) {
                 return a.equalWithAbsError(b, tolerance);
             }),
        peer(kName, "NodusMul_Quat_Solve",
             [](V4f const& a, V4f const& b) {
                 return lanesOf((quatOf(a) * quatOf(b)).normalized());
             }),
        peer(kName, "NodusSlerp_Quat_Solve",
             [](V4f const& a, V4f const& b, float t) {
                 return lanesOf(Imath::slerpShortestArc(quatOf(a), quatOf(b), t));
             }),
        peer(kName, "NodusRotateVector_Float3_Solve",
             [](V3f const& v, V4f const& q) { return quatOf(q).rotateVector(v); }),
        peer(kName, "NodusMatrixToQuaternion_Solve",
             [](M44f const& m) { return lanesOf(Imath::extractQuat(m)); }),
        peer(kName, "NodusQuaternionToMatrix_Solve",
             [](V4f const& q) { return quatOf(q).toMatrix44(); }),
        peer(kName, "NodusEulerToQuaternion_Solve order=0",
             [](V4f const& angles) {
                 return lanesOf(Eulerf(angles.x, angles.y, angles.z, Eulerf::XYZ).toQuat());
             }),
        peer(kName, "NodusEulerToQuaternion_Solve order=2",
             [](V4f const& angles) {
                 return lanesOf(Eulerf(angles.x, angles.z, angles.y, Eulerf::XZY).toQuat());
             }),
        peer(kName, "NodusQuaternionToEuler_Solve order=0",
             [](V4f const& q) {
                 Eulerf angles(Eulerf::XYZ);
                 angles.extract(quatOf(q));
                 return V4f(angles.x, angles.y, angles.z, 0.0f);
             }),
    };
}

}  // namespace nodus::bench
