// GreaterThanOrEqual: a >= b in every lane. Not the opposite of LessThan, which is false for NaN
// too.
#include "comparisons.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> Bool greaterThanOrEqual(T const& a, T const& b) noexcept
{
    return everyLane([](auto x, auto y) { return qvr::lessEqual(y, x); }, a, b);
}

}  // namespace

void NodusGreaterThanOrEqual_Double_Solve(void const* in, void* out) noexcept
{
    solve<greaterThanOrEqual<Double>>(in, out);
}
void NodusGreaterThanOrEqual_Float_Solve(void const* in, void* out) noexcept
{
    solve<greaterThanOrEqual<Float>>(in, out);
}
void NodusGreaterThanOrEqual_Float2_Solve(void const* in, void* out) noexcept
{
    solve<greaterThanOrEqual<Float2>>(in, out);
}
void NodusGreaterThanOrEqual_Float3_Solve(void const* in, void* out) noexcept
{
    solve<greaterThanOrEqual<Float3>>(in, out);
}
void NodusGreaterThanOrEqual_Float4_Solve(void const* in, void* out) noexcept
{
    solve<greaterThanOrEqual<Float4>>(in, out);
}
void NodusGreaterThanOrEqual_Quaternion_Solve(void const* in, void* out) noexcept
{
    solve<greaterThanOrEqual<Quaternion>>(in, out);
}
void NodusGreaterThanOrEqual_Translation_Solve(void const* in, void* out) noexcept
{
    solve<greaterThanOrEqual<Translation>>(in, out);
}
void NodusGreaterThanOrEqual_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<greaterThanOrEqual<UInt32>>(in, out);
}
void NodusGreaterThanOrEqual_Int32_Solve(void const* in, void* out) noexcept
{
    solve<greaterThanOrEqual<Int32>>(in, out);
}
void NodusGreaterThanOrEqual_UInt8_Solve(void const* in, void* out) noexcept
{
    solve<greaterThanOrEqual<UInt8>>(in, out);
}
