// Eigen. Its matrix goes by columns and multiplies column vectors, which is the same memory and
// the same product as rows and row vectors in the other order.
#include "peer.h"

#include <Eigen/Dense>
#include <Eigen/Geometry>

using namespace nodus::bench;

namespace {

using V3 = Eigen::Vector3f;
using V4 = Eigen::Vector4f;
using M4 = Eigen::Matrix4f;
using Q = Eigen::Quaternionf;  // x, y, z, w in memory

struct Pose {
    V4 t;
    Q q;
    V4 s;
};
static_assert(sizeof(V3) == 12 && sizeof(V4) == 16 && sizeof(Q) == 16);
static_assert(sizeof(M4) == 64 && sizeof(Pose) == 48);

V4 rotated(Q const& q, V4 const& v)
{
    V4 result = v;
    result.head<3>() = q * V3(v.head<3>());
    return result;
}

Q turn(float angle, V3 const& axis) { return Q(Eigen::AngleAxisf(angle, axis)); }

std::vector<Peer> functions()
{
    return {
        peer("Add_Float3", [](V3 const& a, V3 const& b) -> V3 { return a + b; }),
        peer("Add_Float4", [](V4 const& a, V4 const& b) -> V4 { return a + b; }),
        peer("Add_Matrix4x4", [](M4 const& a, M4 const& b) -> M4 { return a + b; }),
        peer("Mul_Float4", [](V4 const& a, V4 const& b) -> V4 { return a.cwiseProduct(b); }),
        peer("Mul_Matrix4x4", [](M4 const& a, M4 const& b) -> M4 { return a * b; }),
        peer("Abs_Matrix4x4", [](M4 const& m) -> M4 { return m.cwiseAbs(); }),
        peer("Equal_Float4", [](V4 const& a, V4 const& b) { return a == b; }),
        peer("AlmostEqual_Matrix4x4",
             [](M4 const& a, M4 const& b, float tolerance) {
                 return ((a - b).array().abs() <= tolerance).all();
             }),
        peer("DotProduct_Float3", [](V3 const& a, V3 const& b) { return a.dot(b); }),
        peer("DotProduct_Float4", [](V4 const& a, V4 const& b) { return a.dot(b); }),
        peer("CrossProduct_Float3", [](V3 const& a, V3 const& b) -> V3 { return a.cross(b); }),
        peer("CrossProduct_Float4", [](V4 const& a, V4 const& b) -> V4 { return a.cross3(b); }),
        peer("Length_Float3", [](V3 const& v) { return v.norm(); }),
        peer("Length_Float4", [](V4 const& v) { return v.norm(); }),
        peer("Normalize_Float3", [](V3 const& v) -> V3 { return v.normalized(); }),
        peer("Normalize_Float4", [](V4 const& v) -> V4 { return v.normalized(); }),
        peer("MatrixToMat44Float", [](M4 const& m) -> M4 { return m.transpose(); }),
        peer("Mul_Quat", [](Q const& a, Q const& b) { return (a * b).normalized(); }),
        peer("Norm_Quat", [](Q const& q) { return q.normalized(); }),
        peer("Slerp_Quat", [](Q const& a, Q const& b, float t) { return a.slerp(t, b); }),
        peer("AxisAndAngleToQuaternion_Float3",
             [](V3 const& axis, float angle) { return turn(angle, axis); }),
        peer("QuatArcRotate",
             [](V4 const& from, V4 const& to) {
                 return Q::FromTwoVectors(from.head<3>(), to.head<3>());
             }),
        peer("RotateVector_Float3", [](V3 const& v, Q const& q) -> V3 { return q * v; }),
        peer("RotateVector_Float4", [](V4 const& v, Q const& q) { return rotated(q, v); }),
        peer("MatrixToQuaternion", [](M4 const& m) { return Q(m.topLeftCorner<3, 3>()); }),
        peer("QuaternionToMatrix",
             [](Q const& q) {
                 M4 m = M4::Identity();
                 m.topLeftCorner<3, 3>() = q.toRotationMatrix();
                 return m;
             }),
        peer("EulerToQuaternion order=0",
             [](V4 const& angles) {
                 return turn(angles.z(), V3::UnitZ()) * turn(angles.y(), V3::UnitY()) *
                        turn(angles.x(), V3::UnitX());
             }),
        peer("EulerToQuaternion order=2",
             [](V4 const& angles) {
                 return turn(angles.y(), V3::UnitY()) * turn(angles.z(), V3::UnitZ()) *
                        turn(angles.x(), V3::UnitX());
             }),
        peer("TransformTQS",
             [](Pose const& a, Pose const& b) {
                 return Pose{rotated(a.q, b.t) + a.t, (a.q * b.q).normalized(),
                             a.s.cwiseProduct(b.s)};
             }),
        peer("TransformInverseTQS",
             [](Pose const& a, Pose const& b) {
                 Q const back = a.q.normalized().conjugate();
                 return Pose{rotated(back, b.t - a.t), (back * b.q).normalized(),
                             b.s.cwiseQuotient(a.s)};
             }),
        peer("TransformPositionWithTQS",
             [](V4 const& p, Pose const& pose) -> V4 {
                 return rotated(pose.q, p.cwiseProduct(pose.s)) + pose.t;
             }),
    };
}

Library const kEigen("Eigen", functions());

}  // namespace
