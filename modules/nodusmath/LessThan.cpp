// LessThan: a < b in every lane.
#include "comparisons.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> Bool lessThan(T const& a, T const& b) noexcept
{
    return everyLane([](auto x, auto y) { return qvr::less(x, y); }, a, b);
}

}  // namespace

void NodusLessThan_Double_Solve(void const* in, void* out) noexcept
{
    solve<lessThan<Double>>(in, out);
}
void NodusLessThan_Float_Solve(void const* in, void* out) noexcept
{
    solve<lessThan<Float>>(in, out);
}
void NodusLessThan_Float2_Solve(void const* in, void* out) noexcept
{
    solve<lessThan<Float2>>(in, out);
}
void NodusLessThan_Float3_Solve(void const* in, void* out) noexcept
{
    solve<lessThan<Float3>>(in, out);
}
void NodusLessThan_Float4_Solve(void const* in, void* out) noexcept
{
    solve<lessThan<Float4>>(in, out);
}
void NodusLessThan_Quaternion_Solve(void const* in, void* out) noexcept
{
    solve<lessThan<Quaternion>>(in, out);
}
void NodusLessThan_Translation_Solve(void const* in, void* out) noexcept
{
    solve<lessThan<Translation>>(in, out);
}
void NodusLessThan_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<lessThan<UInt32>>(in, out);
}
void NodusLessThan_Int32_Solve(void const* in, void* out) noexcept
{
    solve<lessThan<Int32>>(in, out);
}
void NodusLessThan_UInt8_Solve(void const* in, void* out) noexcept
{
    solve<lessThan<UInt8>>(in, out);
}
