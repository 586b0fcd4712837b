// The families without a file of their own.
#include "divisors.h"
#include "kernels.h"
#include "logic.h"
#include "ports.h"
#include "rounding.h"
#include "scalar_functions.h"
#include "transcendental.h"

#include <cmath>

using namespace nodusmath;

namespace {

// Mod: the remainder of the quotient truncated towards zero, with the sign of a; 0 for a zero
// integer divisor, as Div has it, NaN for a zero float one.
Double remainderOf(Double a, Double b) noexcept { return std::fmod(a, b); }
Float remainderOf(Float a, Float b) noexcept { return std::fmod(a, b); }
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
