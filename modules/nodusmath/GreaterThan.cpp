// GreaterThan: a > b in every lane.
#include "comparisons.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> Bool greaterThan(T const& a, T const& b) noexcept
{
    return everyLane([](auto x, auto y) { return qvr::less(y, x); }, a, b);
}

}  // namespace

void NodusGreaterThan_Double_Solve(void const* in, void* out) noexcept
{
    solve<greaterThan<Double>>(in, out);
}
void NodusGreaterThan_Float_Solve(void const* in, void* out) noexcept
{
    solve<greaterThan<Float>>(in, out);
}
void NodusGreaterThan_Float2_Solve(void const* in, void* out) noexcept
{
    solve<greaterThan<Float2>>(in, out);
}
void NodusGreaterThan_Float3_Solve(void const* in, void* out) noexcept
{
    solve<greaterThan<Float3>>(in, out);
}
void NodusGreaterThan_Float4_Solve(void const* in, void* out) noexcept
{
    solve<greaterThan<Float4>>(in, out);
}
void NodusGreaterThan_Quaternion_Solve(void const* in, void* out) noexcept
{
    solve<greaterThan<Quaternion>>(in, out);
}
void NodusGreaterThan_Translation_Solve(void const* in, void* out) noexcept
{
    solve<greaterThan<Translation>>(in, out);
}
void NodusGreaterThan_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<greaterThan<UInt32>>(in, out);
}
void NodusGreaterThan_Int32_Solve(void const* in, void* out) noexcept
{
    solve<greaterThan<Int32>>(in, out);
}
void NodusGreaterThan_UInt8_Solve(void const* in, void* out) noexcept
{
    solve<greaterThan<UInt8>>(in, out);
}
