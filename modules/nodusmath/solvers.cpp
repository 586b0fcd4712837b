// The registration records of all kernels, and the hooks of the host's module loader.
#include "kernels.h"

#include "nodus/runtime/NodusAutoSymbol.h"

#include <algorithm>
#include <array>
#include <string_view>

using nodus::runtime::NodusAutoSymbol;

namespace {

// What the list says, said once more by family and type: a kernel that is missing, misspelt, listed
// twice or out of order in one of the two does not compile.
struct Family {
    std::string_view operation, types;
};
constexpr Family kFamilies[] = {
    {"Abs", "Double Float Float2 Float3 Float4 Int32 UInt8 UInt32 Matrix4x4"},
    {"ACos", "Double Float"},
    {"Add", "Float Float2 Float3 Float4 Int32 Matrix4x4 Translation UInt32 UInt8"},
    {"All", "Float2 Float3 Float4"},
    {"AlmostEqual", "Color Double Float Float2 Float3 Float4 Matrix4x4 Quaternion Translation"},
    {"Any", "Float2 Float3 Float4"},
    {"ASin", "Double Float"},
    {"ATan", "Double Float"},
    {"AxisAndAngleToQuaternion", "Float3 Float4"},
    {"BitwiseAnd", "Int32 UInt32 UInt8"},
    {"BitwiseNot", "Int32 UInt32 UInt8"},
    {"BitwiseOr", "Int32 UInt32 UInt8"},
    {"BitwiseXor", "Int32 UInt32 UInt8"},
    {"CastFloatToInt32", ""},
    {"CastInt32ToFloat", ""},
    {"Ceil", "Double Float"},
    {"Clamp", "Float Int32 UInt32 UInt8"},
    {"Conj", "Quat"},
    {"Cos", "Double Float"},
    {"CosineLaw", ""},
    {"CrossProduct", "Float3 Float4"},
    {"Degrees", "Double Float"},
    {"Distance", "Float2 Float3 Float4"},
    {"Div", "Float Int32 UInt32 UInt8"},
    {"DotProduct", "Float2 Float3 Float4"},
    {"Equal", "Bool Double Float Float2 Float3 Float4 Int32 Quaternion Translation UInt32 UInt8"},
    {"EulerToQuaternion", ""},
    {"Exp", "Double Float"},
    {"Exp2", "Double Float"},
    {"FastBiasAndGain", "Double Float"},
    {"Floor", "Double Float"},
    {"Frac", "Double Float"},
    {"GreaterThan", "Double Float Float2 Float3 Float4 Quaternion Translation UInt32 Int32 UInt8"},
    {"GreaterThanOrEqual",
     "Double Float Float2 Float3 Float4 Quaternion Translation UInt32 Int32 UInt8"},
    {"InRange", "Double Float Float2 Float3 Float4 Quaternion Translation Int32 UInt32 UInt8"},
    {"Inv", "Quat"},
    {"InverseTQS", ""},
    {"Length", "Float2 Float3 Float4"},
    {"Lerp", "Quat"},
    {"LessThan", "Double Float Float2 Float3 Float4 Quaternion Translation UInt32 Int32 UInt8"},
    {"LessThanOrEqual",
     "Double Float Float2 Float3 Float4 Quaternion Translation UInt32 Int32 UInt8"},
    {"Ln", "Double Float"},
    {"Log10", "Double Float"},
    {"Log2", "Double Float"},
    {"And", ""},
    {"Not", ""},
    {"Or", ""},
    {"Xor", ""},
    {"LogValue", "Bool String Float Float2 Float3 Float4 Int32 UInt32 TQS"},
    {"MatrixToQuaternion", ""},
    {"MatrixToMat44Float", ""},
    {"Mat44FloatToMatrix", ""},
    {"Max", "Double Float Int32 UInt32 UInt8"},
    {"Min", "Double Float Int32 UInt32 UInt8"},
    {"Mod", "Double Float Int32 UInt32 UInt8"},
    {"Mul", "Float Float2 Float3 Float4 Int32 Matrix4x4 Quat UInt32 UInt8"},
    {"MultiplyByScalar", "Float2 Float3 Float4"},
    {"Negate", "Double Float Float2 Float3 Float4 Translation Quaternion Int32"},
    {"Noise1D", ""},
    {"Noise2D", ""},
    {"Noise3D", ""},
    {"Norm", "Quat"},
    {"Normalize", "Float2 Float3 Float4 Quaternion"},
    {"OutRange", "Double Float Float2 Float3 Float4 Translation Quaternion Int32 UInt32 UInt8"},
    {"Pow", "Double Float"},
    {"QuatArcRotate", ""},
    {"QuaternionToAxisAndAngle", "Float3 Float4"},
    {"QuaternionToEuler", ""},
    {"QuaternionToMatrix", ""},
    {"Radians", "Double Float"},
    {"Rescale", "Double Float"},
    {"RotateVector", "Float3 Float4"},
    {"Round", "Double Float"},
    {"RSqrt", "Double Float"},
    {"Sat", "Float"},
    {"Sign", "Double Float Int32"},
    {"Sin", "Double Float"},
    {"SinCos", "Double Float"},
    {"Slerp", "Quat"},
    {"SmoothStep", "Double Float"},
    {"Sqrt", "Double Float"},
    {"Step", "Double Float"},
    {"Sub", "Float Float2 Float3 Float4 Int32 Matrix4x4 UInt32 UInt8"},
    {"Tan", "Double Float"},
    {"TransformInverseTQS", ""},
    {"TransformPositionWithTQS", ""},
    {"TransformTQS", ""},
    {"RandomGenerator", "Bool UInt8 Int32 Float Float4 Quaternion Color"},
};

constexpr std::string_view kNames[] = {
#define NODUS_KERNEL(name) #name,
#define NODUS_GENERATOR(name) #name,
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR
};

// Walks along kNames and takes the names that it is told to expect.
class NameWalk {
public:
    // The next name must be these parts, one after the other.
    template <typename... Parts> constexpr void expect(Parts... parts)
    {
        std::string_view rest = m_next < std::size(kNames) ? kNames[m_next] : std::string_view{};
        ((m_agrees = m_agrees && rest.starts_with(std::string_view{parts}),
          rest.remove_prefix(std::min(rest.size(), std::string_view{parts}.size()))),
         ...);
        m_agrees = m_agrees && rest.empty();
        ++m_next;
    }
    constexpr bool agreesToTheEnd() const { return m_agrees && m_next == std::size(kNames); }

private:
    std::size_t m_next = 0;
    bool m_agrees = true;
};

constexpr bool namesFollowFamilies()
{
    NameWalk walk;
    for (auto [operation, types] : kFamilies) {
        if (types.empty())
            walk.expect("Nodus", operation, "_Solve");
        while (!types.empty()) {
            std::string_view const type = types.substr(0, types.find(' '));
            types.remove_prefix(std::min(types.size(), type.size() + 1));
            if (operation == "RandomGenerator")
                walk.expect("Nodus", operation, "_", type, "_Init");
            walk.expect("Nodus", operation, operation == "LogValue" ? "" : "_", type, "_Solve");
        }
    }
    return walk.agreesToTheEnd();
}
static_assert(namesFollowFamilies(), "kernels.def and kFamilies disagree");

}  // namespace

// Objects of one translation unit are built from top to bottom and destroyed in reverse: the order
// of the list is the order of registration.
#define NODUS_KERNEL(name)                                                                         \
    static NodusAutoSymbol ___##name(#name, "(*,*)", reinterpret_cast<void const*>(&name));
#define NODUS_GENERATOR(name)                                                                      \
    static NodusAutoSymbol ___##name(#name, "(*,*,*)", reinterpret_cast<void const*>(&name));
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR

void nodusmath_loadModule() noexcept {}
void nodusmath_unloadModule() noexcept {}
