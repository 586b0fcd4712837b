// glm. Values of 16 bytes are its aligned types, which it computes four lanes at a time.
#define GLM_FORCE_INTRINSICS
#define GLM_ENABLE_EXPERIMENTAL
#include "peer.h"

#include <glm/ext/matrix_relational.hpp>
#include <glm/glm.hpp>
#include <glm/gtc/noise.hpp>
#include <glm/gtc/quaternion.hpp>
#include <glm/gtc/type_aligned.hpp>
#include <glm/gtx/quaternion.hpp>

using namespace nodus::bench;

namespace {

using V2 = glm::vec2;
using V3 = glm::vec3;
using V4 = glm::aligned_vec4;
using M4 = glm::aligned_mat4;
using Q = glm::qua<float, glm::aligned_highp>;  // x, y, z, w in memory

struct Pose {
    V4 t;
    Q q;
    V4 s;
};
struct AxisAngle {
    V3 axis;
    float angle;
};
static_assert(sizeof(V3) == 12 && sizeof(V4) == 16 && sizeof(Q) == 16);
static_assert(sizeof(M4) == 64 && sizeof(Pose) == 48);

// Its own product of an aligned quaternion and four lanes does not compile.
V4 rotated(Q const& q, V4 const& v) { return V4(q * glm::aligned_vec3(v), v.w); }

std::vector<Peer> functions()
{
    return {
        peer("Abs_Float3", [](V3 const& v) { return abs(v); }),
        peer("Abs_Float4", [](V4 const& v) { return abs(v); }),
        peer("Add_Float", [](float a, float b) { return a + b; }),
        peer("Add_Float2", [](V2 const& a, V2 const& b) { return a + b; }),
        peer("Add_Float3", [](V3 const& a, V3 const& b) { return a + b; }),
        peer("Add_Float4", [](V4 const& a, V4 const& b) { return a + b; }),
        peer("Add_Matrix4x4", [](M4 const& a, M4 const& b) { return a + b; }),
        peer("Mul_Float3", [](V3 const& a, V3 const& b) { return a * b; }),
        peer("Mul_Float4", [](V4 const& a, V4 const& b) { return a * b; }),
        peer("Mul_Matrix4x4", [](M4 const& a, M4 const& b) { return a * b; }),
        peer("MultiplyByScalar_Float3", [](V3 const& v, float s) { return v * s; }),
        peer("MultiplyByScalar_Float4", [](V4 const& v, float s) { return v * s; }),
        peer("Negate_Float3", [](V3 const& v) { return -v; }),
        peer("Negate_Float4", [](V4 const& v) { return -v; }),
        peer("Clamp_Float",
             [](float v, float low, float high) { return glm::clamp(v, low, high); }),
        peer("Step_Float", [](float v, float edge) { return glm::step(edge, v); }),
        peer("SmoothStep_Float",
             [](float v, float edge0, float edge1) { return glm::smoothstep(edge0, edge1, v); }),
        peer("Sign_Float", [](float v) { return glm::sign(v); }),
        peer("Floor_Float", [](float v) { return glm::floor(v); }),
        peer("Round_Float", [](float v) { return glm::roundEven(v); }),
        peer("Degrees_Float", [](float v) { return glm::degrees(v); }),
        peer("RSqrt_Float", [](float v) { return glm::inversesqrt(v); }),
        peer("Equal_Float3", [](V3 const& a, V3 const& b) { return all(equal(a, b)); }),
        peer("Equal_Float4", [](V4 const& a, V4 const& b) { return all(equal(a, b)); }),
        peer("AlmostEqual_Float4",
             [](V4 const& a, V4 const& b, float tolerance) {
                 return all(lessThanEqual(abs(a - b), V4(tolerance)));
             }),
        peer("AlmostEqual_Matrix4x4",
             [](M4 const& a, M4 const& b, float tolerance) { return all(equal(a, b, tolerance)); }),
        peer("GreaterThan_Float3", [](V3 const& a, V3 const& b) { return all(greaterThan(a, b)); }),
        peer("GreaterThan_Float4", [](V4 const& a, V4 const& b) { return all(greaterThan(a, b)); }),
        peer("InRange_Float3",
             [](V3 const& v, V3 const& low, V3 const& high) {
                 return all(lessThanEqual(low, v)) && all(lessThanEqual(v, high));
             }),
        peer("InRange_Float4",
             [](V4 const& v, V4 const& low, V4 const& high) {
                 return all(lessThanEqual(low, v)) && all(lessThanEqual(v, high));
             }),
        peer("All_Float4", [](V4 const& v) { return all(notEqual(v, V4(0.0f))); }),
        peer("Any_Float4", [](V4 const& v) { return any(notEqual(v, V4(0.0f))); }),
        peer("DotProduct_Float3", [](V3 const& a, V3 const& b) { return dot(a, b); }),
        peer("DotProduct_Float4", [](V4 const& a, V4 const& b) { return dot(a, b); }),
        peer("CrossProduct_Float3", [](V3 const& a, V3 const& b) { return cross(a, b); }),
        peer("Length_Float3", [](V3 const& v) { return length(v); }),
        peer("Length_Float4", [](V4 const& v) { return length(v); }),
        peer("Distance_Float3", [](V3 const& a, V3 const& b) { return distance(a, b); }),
        peer("Normalize_Float3", [](V3 const& v) { return normalize(v); }),
        peer("Normalize_Float4", [](V4 const& v) { return normalize(v); }),
        otherwise("Noise2D", [](V2 const& at) { return perlin(at); }),
        otherwise("Noise3D", [](V3 const& at) { return perlin(at); }),
        peer("Mul_Quat", [](Q const& a, Q const& b) { return normalize(a * b); }),
        peer("Norm_Quat", [](Q const& q) { return normalize(q); }),
        peer("Conj_Quat", [](Q const& q) { return conjugate(q); }),
        peer("Inv_Quat", [](Q const& q) { return normalize(conjugate(q)); }),
        peer("Lerp_Quat",
             [](Q const& a, Q const& b, float t) {
                 Q const near = dot(a, b) < 0 ? -b : b;
                 return normalize(a * (1 - t) + near * t);
             }),
        peer("Slerp_Quat", [](Q const& a, Q const& b, float t) { return slerp(a, b, t); }),
        peer("AxisAndAngleToQuaternion_Float3",
             [](V3 const& axis, float angle) { return Q(glm::angleAxis(angle, axis)); }),
        peer("QuaternionToAxisAndAngle_Float3",
             [](Q const& q) {
                 return AxisAngle{V3(axis(q)), angle(q)};
             }),
        peer("QuatArcRotate",
             [](V4 const& from, V4 const& to) {
                 return Q(rotation(normalize(V3(from)), normalize(V3(to))));
             }),
        peer("RotateVector_Float3", [](V3 const& v, glm::quat const& q) { return q * v; }),
        peer("RotateVector_Float4", [](V4 const& v, Q const& q) { return rotated(q, v); }),
        peer("MatrixToQuaternion", [](M4 const& m) { return quat_cast(m); }),
        peer("QuaternionToMatrix", [](Q const& q) { return mat4_cast(q); }),
        peer("MatrixToMat44Float", [](M4 const& m) { return transpose(m); }),
        peer("EulerToQuaternion order=0", [](V4 const& angles) { return glm::quat(V3(angles)); }),
        peer("QuaternionToEuler order=0",
             [](glm::quat const& q) { return V4(eulerAngles(q), 0.0f); }),
        peer("TransformPositionWithTQS",
             [](V4 const& p, Pose const& pose) { return rotated(pose.q, p * pose.s) + pose.t; }),
        peer("TransformTQS",
             [](Pose const& a, Pose const& b) {
                 return Pose{rotated(a.q, b.t) + a.t, normalize(a.q * b.q), a.s * b.s};
             }),
        peer("TransformInverseTQS",
             [](Pose const& a, Pose const& b) {
                 Q const back = conjugate(normalize(a.q));
                 return Pose{rotated(back, b.t - a.t), normalize(back * b.q), b.s / a.s};
             }),
    };
}

Library const kGlm("glm", functions());

}  // namespace
