// glm. Values of 16 bytes are its aligned types, which it computes four lanes at a time.
#define GLM_FORCE_INTRINSICS
#define GLM_ENABLE_EXPERIMENTAL
#include "peer.h"

#include <glm/ext/matrix_relational.hpp>
#include <glm/glm.hpp>
#include <glm/gtc/epsilon.hpp>
#include <glm/gtc/noise.hpp>
#include <glm/gtc/quaternion.hpp>
#include <glm/gtc/type_aligned.hpp>
#include <glm/gtx/quaternion.hpp>

namespace nodus::bench {

namespace {

using glm::vec2;
using glm::vec3;
using vec4 = glm::aligned_vec4;
using mat4 = glm::aligned_mat4;
using quat = glm::qua<float, glm::aligned_highp>;  // x, y, z, w in memory

struct Pose {
    vec4 t;
    quat q;
    vec4 s;
};
struct AxisAngle {
    vec3 axis;
    float angle;
};
static_assert(sizeof(vec3) == 12 && sizeof(vec4) == 16 && sizeof(quat) == 16);
static_assert(sizeof(mat4) == 64 && sizeof(Pose) == 48);

constexpr char const* kName = "glm";

// Its own product of an aligned quaternion and four lanes does not compile.
vec4 rotated(quat const& q, vec4 const& v) { return vec4(q * glm::aligned_vec3(v), v.w); }

std::vector<Peer> arithmetic()
{
    return {
        peer(kName, "NodusAbs_Float3_Solve", [](vec3 const& v) { return glm::abs(v); }),
        peer(kName, "NodusAbs_Float4_Solve", [](vec4 const& v) { return glm::abs(v); }),
        peer(kName, "NodusAdd_Float_Solve", [](float a, float b) { return a + b; }),
        peer(kName, "NodusAdd_Float2_Solve", [](vec2 const& a, vec2 const& b) { return a + b; }),
        peer(kName, "NodusAdd_Float3_Solve", [](vec3 const& a, vec3 const& b) { return a + b; }),
        peer(kName, "NodusAdd_Float4_Solve", [](vec4 const& a, vec4 const& b) { return a + b; }),
        peer(kName, "NodusAdd_Matrix4x4_Solve", [](mat4 const& a, mat4 const& b) { return a + b; }),
        peer(kName, "NodusMul_Float3_Solve", [](vec3 const& a, vec3 const& b) { return a * b; }),
        peer(kName, "NodusMul_Float4_Solve", [](vec4 const& a, vec4 const& b) { return a * b; }),
        peer(kName, "NodusMul_Matrix4x4_Solve", [](mat4 const& a, mat4 const& b) { return a * b; }),
        peer(kName, "NodusMultiplyByScalar_Float3_Solve",
             [](vec3 const& v, float scalar) { return v * scalar; }),
        peer(kName, "NodusMultiplyByScalar_Float4_Solve",
             [](vec4 const& v, float scalar) { return v * scalar; }),
        peer(kName, "NodusNegate_Float3_Solve", [](vec3 const& v) { return -v; }),
        peer(kName, "NodusNegate_Float4_Solve", [](vec4 const& v) { return -v; }),
        peer(kName, "NodusClamp_Float_Solve",
             [](float v, float low, float high) { return glm::clamp(v, low, high); }),
        peer(kName, "NodusStep_Float_Solve",
             [](float v, float edge) { return glm::step(edge, v); }),
        peer(kName, "NodusSmoothStep_Float_Solve",
             [](float v, float edge0, float edge1) { return glm::smoothstep(edge0, edge1, v); }),
        peer(kName, "NodusSign_Float_Solve", [](float v) { return glm::sign(v); }),
        peer(kName, "NodusFloor_Float_Solve", [](float v) { return glm::floor(v); }),
        peer(kName, "NodusRound_Float_Solve", [](float v) { return glm::roundEven(v); }),
        peer(kName, "NodusDegrees_Float_Solve", [](float v) { return glm::degrees(v); }),
        peer(kName, "NodusRSqrt_Float_Solve", [](float v) { return glm::inversesqrt(v); }),
    };
}

std::vector<Peer> comparisons()
{
    return {
        peer(kName, "NodusEqual_Float3_Solve",
             [](vec3 const& a, vec3 const& b) { return glm::all(glm::equal(a, b)); }),
        peer(kName, "NodusEqual_Float4_Solve",
             [](vec4 const& a, vec4 const& b) { return glm::all(glm::equal(a, b)); }),
        peer(kName, "NodusAlmostEqual_Float4_Solve",
             [](vec4 const& a, vec4 const& b, float tolerance) {
                 return glm::all(glm::lessThanEqual(glm::abs(a - b), vec4(tolerance)));
             }),
        peer(kName, "NodusAlmostEqual_Matrix4x4_Solve",
             [](mat4 const& a, mat4 const& b, float tolerance) {
                 return glm::all(glm::equal(a, b, tolerance));
             }),
        peer(kName, "NodusGreaterThan_Float3_Solve",
             [](vec3 const& a, vec3 const& b) { return glm::all(glm::greaterThan(a, b)); }),
        peer(kName, "NodusGreaterThan_Float4_Solve",
             [](vec4 const& a, vec4 const& b) { return glm::all(glm::greaterThan(a, b)); }),
        peer(kName, "NodusInRange_Float3_Solve",
             [](vec3 const& v, vec3 const& low, vec3 const& high) {
                 return glm::all(glm::lessThanEqual(low, v)) &&
                        glm::all(glm::lessThanEqual(v, high));
             }),
        peer(kName, "NodusInRange_Float4_Solve",
             [](vec4 const& v, vec4 const& low, vec4 const& high) {
                 return glm::all(glm::lessThanEqual(low, v)) &&
                        glm::all(glm::lessThanEqual(v, high));
             }),
        peer(kName, "NodusAll_Float4_Solve",
             [](vec4 const& v) { return glm::all(glm::notEqual(v, vec4(0.0f))); }),
        peer(kName, "NodusAny_Float4_Solve",
             [](vec4 const& v) { return glm::any(glm::notEqual(v, vec4(0.0f))); }),
    };
}

std::vector<Peer> geometry()
{
    return {
        peer(kName, "NodusDotProduct_Float3_Solve",
             [](vec3 const& a, vec3 const& b) { return glm::dot(a, b); }),
        peer(kName, "NodusDotProduct_Float4_Solve",
             [](vec4 const& a, vec4 const& b) { return glm::dot(a, b); }),
        peer(kName, "NodusCrossProduct_Float3_Solve",
             [](vec3 const& a, vec3 const& b) { return glm::cross(a, b); }),
        peer(kName, "NodusLength_Float3_Solve", [](vec3 const& v) { return glm::length(v); }),
        peer(kName, "NodusLength_Float4_Solve", [](vec4 const& v) { return glm::length(v); }),
        peer(kName, "NodusDistance_Float3_Solve",
             [](vec3 const& a, vec3 const& b) { return glm::distance(a, b); }),
        peer(kName, "NodusNormalize_Float3_Solve", [](vec3 const& v) { return glm::normalize(v); }),
        peer(kName, "NodusNormalize_Float4_Solve", [](vec4 const& v) { return glm::normalize(v); }),
        otherwise(kName, "NodusNoise2D_Solve", [](vec2 const& at) { return glm::perlin(at); }),
        otherwise(kName, "NodusNoise3D_Solve", [](vec3 const& at) { return glm::perlin(at); }),
    };
}

std::vector<Peer> rotations()
{
    return {
        peer(kName, "NodusMul_Quat_Solve",
             [](quat const& a, quat const& b) { return glm::normalize(a * b); }),
        peer(kName, "NodusNorm_Quat_Solve", [](quat const& q) { return glm::normalize(q); }),
        peer(kName, "NodusConj_Quat_Solve", [](quat const& q) { return glm::conjugate(q); }),
        peer(kName, "NodusInv_Quat_Solve",
             [](quat const& q) { return glm::normalize(glm::conjugate(q)); }),
        peer(kName, "NodusLerp_Quat_Solve",
             [](quat const& a, quat const& b, float t) {
                 quat const near = glm::dot(a, b) < 0 ? -b : b;
                 return glm::normalize(a * (1 - t) + near * t);
             }),
        peer(kName, "NodusSlerp_Quat_Solve",
             [](quat const& a, quat const& b, float t) { return glm::slerp(a, b, t); }),
        peer(kName, "NodusAxisAndAngleToQuaternion_Float3_Solve",
             [](vec3 const& axis, float angle) { return quat(glm::angleAxis(angle, axis)); }),
        peer(kName, "NodusQuaternionToAxisAndAngle_Float3_Solve",
             [](quat const& q) {
                 return AxisAngle{vec3(glm::axis(q)), glm::angle(q)};
             }),
        peer(kName, "NodusQuatArcRotate_Solve",
             [](vec4 const& from, vec4 const& to) {
                 return quat(glm::rotation(glm::normalize(vec3(from)), glm::normalize(vec3(to))));
             }),
        peer(kName, "NodusRotateVector_Float3_Solve",
             [](vec3 const& v, glm::quat const& q) { return q * v; }),
        peer(kName, "NodusRotateVector_Float4_Solve",
             [](vec4 const& v, quat const& q) { return rotated(q, v); }),
        peer(kName, "NodusMatrixToQuaternion_Solve",
             [](mat4 const& m) { return glm::quat_cast(m); }),
        peer(kName, "NodusQuaternionToMatrix_Solve",
             [](quat const& q) { return glm::mat4_cast(q); }),
        peer(kName, "NodusMatrixToMat44Float_Solve",
             [](mat4 const& m) { return glm::transpose(m); }),
        peer(kName, "NodusEulerToQuaternion_Solve order=0",
             [](vec4 const& angles) { return glm::quat(vec3(angles)); }),
        peer(kName, "NodusQuaternionToEuler_Solve order=0",
             [](glm::quat const& q) { return vec4(glm::eulerAngles(q), 0.0f); }),
        peer(kName, "NodusTransformPositionWithTQS_Solve",
             [](vec4 const& p, Pose const& pose) { return rotated(pose.q, p * pose.s) + pose.t; }),
        peer(kName, "NodusTransformTQS_Solve",
             [](Pose const& a, Pose const& b) {
                 return Pose{rotated(a.q, b.t) + a.t, glm::normalize(a.q * b.q), a.s * b.s};
             }),
        peer(kName, "NodusTransformInverseTQS_Solve",
             [](Pose const& a, Pose const& b) {
                 quat const back = glm::conjugate(glm::normalize(a.q));
                 return Pose{rotated(back, b.t - a.t), glm::normalize(back * b.q), b.s / a.s};
             }),
    };
}

}  // namespace

std::vector<Peer> glmPeers()
{
    std::vector<Peer> all = arithmetic();
    for (auto const& more : {comparisons(), geometry(), rotations()})
        all.insert(all.end(), more.begin(), more.end());
    return all;
}

}  // namespace nodus::bench
