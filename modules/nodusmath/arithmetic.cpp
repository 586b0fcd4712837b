// The families without a file of their own.
#include "divisors.h"
#include "fourlanes.h"
#include "kernels.h"
#include "logic.h"
#include "mathlibrary.h"
#include "ports.h"
#include "qvr/quaternion.h"
#include "qvr/rotation_order.h"
#include "rounding.h"
#include "scalar_functions.h"
#include "transcendental.h"

using namespace nodusmath;

namespace {

// Mod: the remainder of the quotient truncated towards zero, with the sign of a; 0 for a zero
// integer divisor, as Div has it, NaN for a zero float one.
Double remainderOf(Double a, Double b) noexcept { return library::fmod(a, b); }
Float remainderOf(Float a, Float b) noexcept { return library::fmod(a, b); }
Int32 remainderOf(Int32 a, Int32 b) noexcept { return dividesUnsafely(b) ? 0 : a % b; }
UInt32 remainderOf(UInt32 a, UInt32 b) noexcept { return b == 0 ? 0 : a % b; }
UInt8 remainderOf(UInt8 a, UInt8 b) noexcept
{
    return b == 0 ? UInt8{0} : static_cast<UInt8>(a % b);
}

template <typename T> T mod(T a, T b) noexcept { return remainderOf(a, b); }

}  // namespace

// ACos
void NodusACos_Double_Solve(void const* in, void* out) noexcept
{
    solve<arcCosineOf<Double>>(in, out);
}
void NodusACos_Float_Solve(void const* in, void* out) noexcept
{
    solve<arcCosineOf<Float>>(in, out);
}

// ASin
void NodusASin_Double_Solve(void const* in, void* out) noexcept
{
    solve<arcSineOf<Double>>(in, out);
}
void NodusASin_Float_Solve(void const* in, void* out) noexcept { solve<arcSineOf<Float>>(in, out); }

// ATan
void NodusATan_Double_Solve(void const* in, void* out) noexcept
{
    solve<arcTangentOf<Double>>(in, out);
}
void NodusATan_Float_Solve(void const* in, void* out) noexcept
{
    solve<arcTangentOf<Float>>(in, out);
}

// BitwiseAnd
void NodusBitwiseAnd_Int32_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseAnd<Int32>>(in, out);
}
void NodusBitwiseAnd_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseAnd<UInt32>>(in, out);
}
void NodusBitwiseAnd_UInt8_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseAnd<UInt8>>(in, out);
}

// BitwiseNot
void NodusBitwiseNot_Int32_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseNot<Int32>>(in, out);
}
void NodusBitwiseNot_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseNot<UInt32>>(in, out);
}
void NodusBitwiseNot_UInt8_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseNot<UInt8>>(in, out);
}

// BitwiseOr
void NodusBitwiseOr_Int32_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseOr<Int32>>(in, out);
}
void NodusBitwiseOr_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseOr<UInt32>>(in, out);
}
void NodusBitwiseOr_UInt8_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseOr<UInt8>>(in, out);
}

// BitwiseXor
void NodusBitwiseXor_Int32_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseXor<Int32>>(in, out);
}
void NodusBitwiseXor_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseXor<UInt32>>(in, out);
}
void NodusBitwiseXor_UInt8_Solve(void const* in, void* out) noexcept
{
    solve<bitwiseXor<UInt8>>(in, out);
}

// CastFloatToInt32
void NodusCastFloatToInt32_Solve(void const* in, void* out) noexcept { solve<truncated>(in, out); }

// CastInt32ToFloat
void NodusCastInt32ToFloat_Solve(void const* in, void* out) noexcept { solve<asFloat>(in, out); }

// Ceil
void NodusCeil_Double_Solve(void const* in, void* out) noexcept { solve<ceilOf<Double>>(in, out); }
void NodusCeil_Float_Solve(void const* in, void* out) noexcept { solve<ceilOf<Float>>(in, out); }

// Clamp
void NodusClamp_Float_Solve(void const* in, void* out) noexcept { solve<clamped<Float>>(in, out); }
void NodusClamp_Int32_Solve(void const* in, void* out) noexcept { solve<clamped<Int32>>(in, out); }
void NodusClamp_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<clamped<UInt32>>(in, out);
}
void NodusClamp_UInt8_Solve(void const* in, void* out) noexcept { solve<clamped<UInt8>>(in, out); }

// Cos
void NodusCos_Double_Solve(void const* in, void* out) noexcept { solve<cosineOf<Double>>(in, out); }
void NodusCos_Float_Solve(void const* in, void* out) noexcept { solve<cosineOf<Float>>(in, out); }

// CosineLaw
void NodusCosineLaw_Solve(void const* in, void* out) noexcept { solve<cosineLaw>(in, out); }

// Degrees
void NodusDegrees_Double_Solve(void const* in, void* out) noexcept
{
    solve<toDegrees<Double>>(in, out);
}
void NodusDegrees_Float_Solve(void const* in, void* out) noexcept
{
    solve<toDegrees<Float>>(in, out);
}

// Exp
void NodusExp_Double_Solve(void const* in, void* out) noexcept
{
    solve<exponentialOf<Double>>(in, out);
}
void NodusExp_Float_Solve(void const* in, void* out) noexcept
{
    solve<exponentialOf<Float>>(in, out);
}

// Exp2
void NodusExp2_Double_Solve(void const* in, void* out) noexcept
{
    solve<binaryExponentialOf<Double>>(in, out);
}
void NodusExp2_Float_Solve(void const* in, void* out) noexcept
{
    solve<binaryExponentialOf<Float>>(in, out);
}

// FastBiasAndGain
void NodusFastBiasAndGain_Double_Solve(void const* in, void* out) noexcept
{
    solve<fastBiasAndGain<Double>>(in, out);
}
void NodusFastBiasAndGain_Float_Solve(void const* in, void* out) noexcept
{
    solve<fastBiasAndGain<Float>>(in, out);
}

// Floor
void NodusFloor_Double_Solve(void const* in, void* out) noexcept
{
    solve<floorOf<Double>>(in, out);
}
void NodusFloor_Float_Solve(void const* in, void* out) noexcept { solve<floorOf<Float>>(in, out); }

// Frac
void NodusFrac_Double_Solve(void const* in, void* out) noexcept
{
    solve<fractionOf<Double>>(in, out);
}
void NodusFrac_Float_Solve(void const* in, void* out) noexcept
{
    solve<fractionOf<Float>>(in, out);
}

// Ln
void NodusLn_Double_Solve(void const* in, void* out) noexcept
{
    solve<logarithmOf<Double>>(in, out);
}
void NodusLn_Float_Solve(void const* in, void* out) noexcept { solve<logarithmOf<Float>>(in, out); }

// Log10
void NodusLog10_Double_Solve(void const* in, void* out) noexcept
{
    solve<decimalLogarithmOf<Double>>(in, out);
}
void NodusLog10_Float_Solve(void const* in, void* out) noexcept
{
    solve<decimalLogarithmOf<Float>>(in, out);
}

// Log2
void NodusLog2_Double_Solve(void const* in, void* out) noexcept
{
    solve<binaryLogarithmOf<Double>>(in, out);
}
void NodusLog2_Float_Solve(void const* in, void* out) noexcept
{
    solve<binaryLogarithmOf<Float>>(in, out);
}

// And
void NodusAnd_Solve(void const* in, void* out) noexcept { solve<logicalAnd>(in, out); }

// Not
void NodusNot_Solve(void const* in, void* out) noexcept { solve<logicalNot>(in, out); }

// Or
void NodusOr_Solve(void const* in, void* out) noexcept { solve<logicalOr>(in, out); }

// Xor
void NodusXor_Solve(void const* in, void* out) noexcept { solve<logicalXor>(in, out); }

// Max
void NodusMax_Double_Solve(void const* in, void* out) noexcept
{
    solve<greaterOf<Double>>(in, out);
}
void NodusMax_Float_Solve(void const* in, void* out) noexcept { solve<greaterOf<Float>>(in, out); }
void NodusMax_Int32_Solve(void const* in, void* out) noexcept { solve<greaterOf<Int32>>(in, out); }
void NodusMax_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<greaterOf<UInt32>>(in, out);
}
void NodusMax_UInt8_Solve(void const* in, void* out) noexcept { solve<greaterOf<UInt8>>(in, out); }

// Min
void NodusMin_Double_Solve(void const* in, void* out) noexcept { solve<lesserOf<Double>>(in, out); }
void NodusMin_Float_Solve(void const* in, void* out) noexcept { solve<lesserOf<Float>>(in, out); }
void NodusMin_Int32_Solve(void const* in, void* out) noexcept { solve<lesserOf<Int32>>(in, out); }
void NodusMin_UInt32_Solve(void const* in, void* out) noexcept { solve<lesserOf<UInt32>>(in, out); }
void NodusMin_UInt8_Solve(void const* in, void* out) noexcept { solve<lesserOf<UInt8>>(in, out); }

void NodusMod_Double_Solve(void const* in, void* out) noexcept { solve<mod<Double>>(in, out); }
void NodusMod_Float_Solve(void const* in, void* out) noexcept { solve<mod<Float>>(in, out); }
void NodusMod_Int32_Solve(void const* in, void* out) noexcept { solve<mod<Int32>>(in, out); }
void NodusMod_UInt32_Solve(void const* in, void* out) noexcept { solve<mod<UInt32>>(in, out); }
void NodusMod_UInt8_Solve(void const* in, void* out) noexcept { solve<mod<UInt8>>(in, out); }

// Pow
void NodusPow_Double_Solve(void const* in, void* out) noexcept { solve<powerOf<Double>>(in, out); }
void NodusPow_Float_Solve(void const* in, void* out) noexcept { solve<powerOf<Float>>(in, out); }

// Radians
void NodusRadians_Double_Solve(void const* in, void* out) noexcept
{
    solve<toRadians<Double>>(in, out);
}
void NodusRadians_Float_Solve(void const* in, void* out) noexcept
{
    solve<toRadians<Float>>(in, out);
}

// Rescale
void NodusRescale_Double_Solve(void const* in, void* out) noexcept
{
    solve<rescaled<Double>>(in, out);
}
void NodusRescale_Float_Solve(void const* in, void* out) noexcept
{
    solve<rescaled<Float>>(in, out);
}

// Round
void NodusRound_Double_Solve(void const* in, void* out) noexcept
{
    solve<roundOf<Double>>(in, out);
}
void NodusRound_Float_Solve(void const* in, void* out) noexcept { solve<roundOf<Float>>(in, out); }

// RSqrt
void NodusRSqrt_Double_Solve(void const* in, void* out) noexcept
{
    solve<reciprocalSquareRootOf<Double>>(in, out);
}
void NodusRSqrt_Float_Solve(void const* in, void* out) noexcept
{
    solve<reciprocalSquareRootOf<Float>>(in, out);
}

// Sat
void NodusSat_Float_Solve(void const* in, void* out) noexcept { solve<saturated>(in, out); }

// Sign
void NodusSign_Double_Solve(void const* in, void* out) noexcept { solve<signum<Double>>(in, out); }
void NodusSign_Float_Solve(void const* in, void* out) noexcept { solve<signum<Float>>(in, out); }
void NodusSign_Int32_Solve(void const* in, void* out) noexcept { solve<signum<Int32>>(in, out); }

// Sin
void NodusSin_Double_Solve(void const* in, void* out) noexcept { solve<sineOf<Double>>(in, out); }
void NodusSin_Float_Solve(void const* in, void* out) noexcept { solve<sineOf<Float>>(in, out); }

// SinCos
void NodusSinCos_Double_Solve(void const* in, void* out) noexcept
{
    solve<sineAndCosine<Double>>(in, out);
}
void NodusSinCos_Float_Solve(void const* in, void* out) noexcept
{
    solve<sineAndCosine<Float>>(in, out);
}

// SmoothStep
void NodusSmoothStep_Double_Solve(void const* in, void* out) noexcept
{
    solve<smoothStep<Double>>(in, out);
}
void NodusSmoothStep_Float_Solve(void const* in, void* out) noexcept
{
    solve<smoothStep<Float>>(in, out);
}

// Sqrt
void NodusSqrt_Double_Solve(void const* in, void* out) noexcept
{
    solve<squareRootOf<Double>>(in, out);
}
void NodusSqrt_Float_Solve(void const* in, void* out) noexcept
{
    solve<squareRootOf<Float>>(in, out);
}

// Step
void NodusStep_Double_Solve(void const* in, void* out) noexcept { solve<step<Double>>(in, out); }
void NodusStep_Float_Solve(void const* in, void* out) noexcept { solve<step<Float>>(in, out); }

// Tan
void NodusTan_Double_Solve(void const* in, void* out) noexcept
{
    solve<tangentOf<Double>>(in, out);
}
void NodusTan_Float_Solve(void const* in, void* out) noexcept { solve<tangentOf<Float>>(in, out); }
// Quaternions. Zero-length ones are not looked for: they give NaN in every lane.
namespace {

Quaternion conjugateOf(Quaternion const& value) noexcept
{
    return portOf<Quaternion>(qvr::conjugate(lanesOf(value)));
}

// Of the rotation, not of the number: the length is gone as well.
Quaternion inverseOf(Quaternion const& value) noexcept
{
    return portOf<Quaternion>(qvr::normalizeFast(qvr::conjugate(lanesOf(value))));
}

Quaternion unitOf(Quaternion const& value) noexcept
{
    return portOf<Quaternion>(qvr::normalizeFast(lanesOf(value)));
}

Quaternion lerp(Quaternion const& a, Quaternion const& b, Float t) noexcept
{
    return portOf<Quaternion>(qvr::lerp(lanesOf(a), lanesOf(b), qvr::broadcast(t)));
}

Quaternion slerp(Quaternion const& a, Quaternion const& b, Float t) noexcept
{
    return portOf<Quaternion>(qvr::slerp(lanesOf(a), lanesOf(b), qvr::broadcast(t)));
}

Quaternion arcRotation(Float4 const& from, Float4 const& to) noexcept
{
    return portOf<Quaternion>(qvr::arcBetween(lanesOf(from), lanesOf(to)));
}

Quaternion eulerToQuaternion(Float4 const& angles, Int32 order) noexcept
{
    return portOf<Quaternion>(qvr::quaternionOfAngles(order, lanesOf(angles)));
}

Float4 quaternionToEuler(Quaternion const& rotation, Int32 order) noexcept
{
    return portOf<Float4>(qvr::anglesOfQuaternion(order, lanesOf(rotation)));
}

}  // namespace

void NodusConj_Quat_Solve(void const* in, void* out) noexcept { solve<conjugateOf>(in, out); }
void NodusInv_Quat_Solve(void const* in, void* out) noexcept { solve<inverseOf>(in, out); }
void NodusNorm_Quat_Solve(void const* in, void* out) noexcept { solve<unitOf>(in, out); }
void NodusLerp_Quat_Solve(void const* in, void* out) noexcept { solve<lerp>(in, out); }
void NodusSlerp_Quat_Solve(void const* in, void* out) noexcept { solve<slerp>(in, out); }
void NodusQuatArcRotate_Solve(void const* in, void* out) noexcept
{
    solveLanesApart<arcRotation>(in, out);
}
void NodusEulerToQuaternion_Solve(void const* in, void* out) noexcept
{
    solveByKernel<eulerToQuaternion>(in, out);
}
void NodusQuaternionToEuler_Solve(void const* in, void* out) noexcept
{
    solveByKernel<quaternionToEuler>(in, out);
}

// Transforms. Translations and rotations compose as rigid motions, scales by themselves: an outer
// scale does not reach an inner translation. w lanes of translations are added and subtracted like
// any other, those of scales multiplied and divided.
namespace {

TQS composed(TQS const& a, TQS const& b) noexcept
{
    using namespace qvr;
    _vec4 const turn = lanesOf(a.q);
    return {portOf<Translation>(rotated(turn, lanesOf(b.t)) + lanesOf(a.t)),
            portOf<Quaternion>(normalizeFast(hamiltonProduct(turn, lanesOf(b.q)))),
            portOf<Float4>(lanesOf(a.s) * lanesOf(b.s))};
}

// What composed(a, ...) makes b of.
TQS composedWithInverse(TQS const& a, TQS const& b) noexcept
{
    using namespace qvr;
    _vec4 const back = conjugate(normalizeFast(lanesOf(a.q)));
    return {portOf<Translation>(rotated(back, lanesOf(b.t) - lanesOf(a.t))),
            portOf<Quaternion>(normalizeFast(hamiltonProduct(back, lanesOf(b.q)))),
            portOf<Float4>(lanesOf(b.s) / lanesOf(a.s))};
}

// The inverse of each part by itself; the translation is not turned. The scale is the processor's
// estimate, within 1.5 * 2^-12 of the reciprocal.
TQS inverted(TQS const& value) noexcept
{
    using namespace qvr;
    return {portOf<Translation>(negate(lanesOf(value.t))),
            portOf<Quaternion>(conjugate(normalizeFast(lanesOf(value.q)))),
            portOf<Float4>(reciprocalEstimate(lanesOf(value.s)))};
}

Float4 placed(Float4 const& position, TQS const& transform) noexcept
{
    using namespace qvr;
    _vec4 const scaled = lanesOf(position) * lanesOf(transform.s);
    return portOf<Float4>(rotated(lanesOf(transform.q), scaled) + lanesOf(transform.t));
}

}  // namespace

void NodusInverseTQS_Solve(void const* in, void* out) noexcept { solveByKernel<inverted>(in, out); }
void NodusTransformInverseTQS_Solve(void const* in, void* out) noexcept
{
    solveByKernel<composedWithInverse>(in, out);
}
void NodusTransformPositionWithTQS_Solve(void const* in, void* out) noexcept
{
    solveByKernel<placed>(in, out);
}
void NodusTransformTQS_Solve(void const* in, void* out) noexcept
{
    solveByKernel<composed>(in, out);
}
