// LessThanOrEqual: a <= b in every lane. Not the opposite of GreaterThan, which is false for NaN
// too.
#include "comparisons.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> Bool lessThanOrEqual(T const& a, T const& b) noexcept
{
    return everyLane([](auto x, auto y) { return qvr::lessEqual(x, y); }, a, b);
}

}  // namespace

void NodusLessThanOrEqual_Double_Solve(void const* in, void* out) noexcept
{
    solve<lessThanOrEqual<Double>>(in, out);
}
void NodusLessThanOrEqual_Float_Solve(void const* in, void* out) noexcept
{
    solve<lessThanOrEqual<Float>>(in, out);
}
void NodusLessThanOrEqual_Float2_Solve(void const* in, void* out) noexcept
{
    solve<lessThanOrEqual<Float2>>(in, out);
}
void NodusLessThanOrEqual_Float3_Solve(void const* in, void* out) noexcept
{
    solve<lessThanOrEqual<Float3>>(in, out);
}
void NodusLessThanOrEqual_Float4_Solve(void const* in, void* out) noexcept
{
    solve<lessThanOrEqual<Float4>>(in, out);
}
void NodusLessThanOrEqual_Quaternion_Solve(void const* in, void* out) noexcept
{
    solve<lessThanOrEqual<Quaternion>>(in, out);
}
void NodusLessThanOrEqual_Translation_Solve(void const* in, void* out) noexcept
{
    solve<lessThanOrEqual<Translation>>(in, out);
}
void NodusLessThanOrEqual_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<lessThanOrEqual<UInt32>>(in, out);
}
void NodusLessThanOrEqual_Int32_Solve(void const* in, void* out) noexcept
{
    solve<lessThanOrEqual<Int32>>(in, out);
}
void NodusLessThanOrEqual_UInt8_Solve(void const* in, void* out) noexcept
{
    solve<lessThanOrEqual<UInt8>>(in, out);
}
