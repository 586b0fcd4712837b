// Eigen. Its Matrix4f goes by columns and multiplies column vectors, which is the same memory and
// the same product as rows and row vectors in the other order.
#include "peer.h"

#include <Eigen/Dense>
#include <Eigen/Geometry>

namespace nodus::bench {

namespace {

using Eigen::Matrix4f;
using Eigen::Quaternionf;  // x, y, z, w in memory
using Eigen::Vector3f;
using Eigen::Vector4f;

struct Pose {
    Vector4f t;
    Quaternionf q;
    Vector4f s;
};
static_assert(sizeof(Vector3f) == 12 && sizeof(Vector4f) == 16 && sizeof(Quaternionf) == 16);
static_assert(sizeof(Matrix4f) == 64 && sizeof(Pose) == 48);

constexpr char const* kName = "Eigen";

Vector4f rotated(Quaternionf const& q, Vector4f const& v)
{
    Vector4f result = v;
    result.head<3>() = q * Vector3f(v.head<3>());
    return result;
}

Quaternionf turn(float angle, Vector3f const& axis)
{
    return Quaternionf(Eigen::AngleAxisf(angle, axis));
}

std::vector<Peer> vectors()
{
    return {
        peer(kName, "NodusAdd_Float3_Solve",
             [](Vector3f const& a, Vector3f const& b) -> Vector3f { return a + b; }),
        peer(kName, "NodusAdd_Float4_Solve",
             [](Vector4f const& a, Vector4f const& b) -> Vector4f { return a + b; }),
        peer(kName, "NodusAdd_Matrix4x4_Solve",
             [](Matrix4f const& a, Matrix4f const& b) -> Matrix4f { return a + b; }),
        peer(kName, "NodusMul_Float4_Solve",
             [](Vector4f const& a, Vector4f const& b) -> Vector4f { return a.cwiseProduct(b); }),
        peer(kName, "NodusMul_Matrix4x4_Solve",
             [](Matrix4f const& a, Matrix4f const& b) -> Matrix4f { return a * b; }),
        peer(kName, "NodusAbs_Matrix4x4_Solve",
             [](Matrix4f const& m) -> Matrix4f { return m.cwiseAbs(); }),
        peer(kName, "NodusEqual_Float4_Solve",
             [](Vector4f const& a, Vector4f const& b) { return a == b; }),
        peer(kName, "NodusAlmostEqual_Matrix4x4_Solve",
             [](Matrix4f const& a, Matrix4f const& b, float tolerance) {
                 return ((a - b).array().abs() <= tolerance).all();
             }),
        peer(kName, "NodusDotProduct_Float3_Solve",
             [](Vector3f const& a, Vector3f const& b) { return a.dot(b); }),
        peer(kName, "NodusDotProduct_Float4_Solve",
             [](Vector4f const& a, Vector4f const& b) { return a.dot(b); }),
        peer(kName, "NodusCrossProduct_Float3_Solve",
             [](Vector3f const& a, Vector3f const& b) -> Vector3f { return a.cross(b); }),
        peer(kName, "NodusCrossProduct_Float4_Solve",
             [](Vector4f const& a, Vector4f const& b) -> Vector4f { return a.cross3(b); }),
        peer(kName, "NodusLength_Float3_Solve", [](Vector3f const& v) { return v.norm(); }),
        peer(kName, "NodusLength_Float4_Solve", [](Vector4f const& v) { return v.norm(); }),
        peer(kName, "NodusNormalize_Float3_Solve",
             [](Vector3f const& v) -> Vector3f { return v.normalized(); }),
        peer(kName, "NodusNormalize_Float4_Solve",
             [](Vector4f const& v) -> Vector4f { return v.normalized(); }),
        peer(kName, "NodusMatrixToMat44Float_Solve",
             [](Matrix4f const& m) -> Matrix4f { return m.transpose(); }),
    };
}

std::vector<Peer> rotations()
{
    return {
        peer(kName, "NodusMul_Quat_Solve",
             [](Quaternionf const& a, Quaternionf const& b) { return (a * b).normalized(); }),
        peer(kName, "NodusNorm_Quat_Solve", [](Quaternionf const& q) { return q.normalized(); }),
        peer(kName, "NodusSlerp_Quat_Solve",
             [](Quaternionf const& a, Quaternionf const& b, float t) { return a.slerp(t, b); }),
        peer(kName, "NodusAxisAndAngleToQuaternion_Float3_Solve",
             [](Vector3f const& axis, float angle) { return turn(angle, axis); }),
        peer(kName, "NodusQuatArcRotate_Solve",
             [](Vector4f const& from, Vector4f const& to) {
                 return Quaternionf::FromTwoVectors(from.head<3>(), to.head<3>());
             }),
        peer(kName, "NodusRotateVector_Float3_Solve",
             [](Vector3f const& v, Quaternionf const& q) -> Vector3f { return q * v; }),
        peer(kName, "NodusRotateVector_Float4_Solve",
             [](Vector4f const& v, Quaternionf const& q) { return rotated(q, v); }),
        peer(kName, "NodusMatrixToQuaternion_Solve",
             [](Matrix4f const& m) { return Quaternionf(m.topLeftCorner<3, 3>()); }),
        peer(kName, "NodusQuaternionToMatrix_Solve",
             [](Quaternionf const& q) {
                 Matrix4f m = Matrix4f::Identity();
                 m.topLeftCorner<3, 3>() = q.toRotationMatrix();
                 return m;
             }),
        peer(kName, "NodusEulerToQuaternion_Solve order=0",
             [](Vector4f const& angles) {
                 return turn(angles.z(), Vector3f::UnitZ()) * turn(angles.y(), Vector3f::UnitY()) *
                        turn(angles.x(), Vector3f::UnitX());
             }),
        peer(kName, "NodusEulerToQuaternion_Solve order=2",
             [](Vector4f const& angles) {
                 return turn(angles.y(), Vector3f::UnitY()) * turn(angles.z(), Vector3f::UnitZ()) *
                        turn(angles.x(), Vector3f::UnitX());
             }),
        peer(kName, "NodusTransformTQS_Solve",
             [](Pose const& a, Pose const& b) {
                 return Pose{rotated(a.q, b.t) + a.t, (a.q * b.q).normalized(),
                             a.s.cwiseProduct(b.s)};
             }),
        peer(kName, "NodusTransformInverseTQS_Solve",
             [](Pose const& a, Pose const& b) {
                 Quaternionf const back = a.q.normalized().conjugate();
                 return Pose{rotated(back, b.t - a.t), (back * b.q).normalized(),
                             b.s.cwiseQuotient(a.s)};
             }),
        peer(kName, "NodusTransformPositionWithTQS_Solve",
             [](Vector4f const& p, Pose const& pose) -> Vector4f {
                 return rotated(pose.q, p.cwiseProduct(pose.s)) + pose.t;
             }),
    };
}

}  // namespace

std::vector<Peer> eigenPeers()
{
    std::vector<Peer> all = vectors();
    auto const more = rotations();
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

}  // namespace nodus::bench
