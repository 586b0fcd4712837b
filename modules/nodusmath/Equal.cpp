// Equal: a == b in every lane. Zeros of either sign are equal, NaN equals nothing. Of a Bool the
// stored bytes are compared: 1 and 2 differ.
#include "comparisons.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> Bool equals(T const& a, T const& b) noexcept
{
    return everyLane([](auto x, auto y) { return qvr::equal(x, y); }, a, b);
}

}  // namespace

void NodusEqual_Bool_Solve(void const* in, void* out) noexcept { solve<equals<Bool>>(in, out); }
void NodusEqual_Double_Solve(void const* in, void* out) noexcept { solve<equals<Double>>(in, out); }
void NodusEqual_Float_Solve(void const* in, void* out) noexcept { solve<equals<Float>>(in, out); }
void NodusEqual_Float2_Solve(void const* in, void* out) noexcept { solve<equals<Float2>>(in, out); }
void NodusEqual_Float3_Solve(void const* in, void* out) noexcept { solve<equals<Float3>>(in, out); }
void NodusEqual_Float4_Solve(void const* in, void* out) noexcept { solve<equals<Float4>>(in, out); }
void NodusEqual_Int32_Solve(void const* in, void* out) noexcept { solve<equals<Int32>>(in, out); }
void NodusEqual_Quaternion_Solve(void const* in, void* out) noexcept
{
    solve<equals<Quaternion>>(in, out);
}
void NodusEqual_Translation_Solve(void const* in, void* out) noexcept
{
    solve<equals<Translation>>(in, out);
}
void NodusEqual_UInt32_Solve(void const* in, void* out) noexcept { solve<equals<UInt32>>(in, out); }
void NodusEqual_UInt8_Solve(void const* in, void* out) noexcept { solve<equals<UInt8>>(in, out); }
