// OutRange: value < min or value > max in any lane. Not the opposite of InRange: a NaN value is
// neither in nor out, and beside a NaN bound the other one decides.
#include "comparisons.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> Bool outRange(T const& value, T const& min, T const& max) noexcept
{
    return anyLane([](auto v, auto low,
                      auto high) { return qvr::either(qvr::less(v, low), qvr::less(high, v)); },
                   value, min, max);
}

}  // namespace

void NodusOutRange_Double_Solve(void const* in, void* out) noexcept
{
    solve<outRange<Double>>(in, out);
}
void NodusOutRange_Float_Solve(void const* in, void* out) noexcept
{
    solve<outRange<Float>>(in, out);
}
void NodusOutRange_Float2_Solve(void const* in, void* out) noexcept
{
    solve<outRange<Float2>>(in, out);
}
void NodusOutRange_Float3_Solve(void const* in, void* out) noexcept
{
    solve<outRange<Float3>>(in, out);
}
void NodusOutRange_Float4_Solve(void const* in, void* out) noexcept
{
    solve<outRange<Float4>>(in, out);
}
void NodusOutRange_Translation_Solve(void const* in, void* out) noexcept
{
    solve<outRange<Translation>>(in, out);
}
void NodusOutRange_Quaternion_Solve(void const* in, void* out) noexcept
{
    solve<outRange<Quaternion>>(in, out);
}
void NodusOutRange_Int32_Solve(void const* in, void* out) noexcept
{
    solve<outRange<Int32>>(in, out);
}
void NodusOutRange_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<outRange<UInt32>>(in, out);
}
void NodusOutRange_UInt8_Solve(void const* in, void* out) noexcept
{
    solve<outRange<UInt8>>(in, out);
}
