// InRange: min <= value <= max in every lane, the bounds included. False for NaN and for reversed
// bounds.
#include "comparisons.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> Bool inRange(T const& value, T const& min, T const& max) noexcept
{
    return everyLane(
        [](auto v, auto low, auto high) {
            return qvr::both(qvr::lessEqual(low, v), qvr::lessEqual(v, high));
        },
        value, min, max);
}

}  // namespace

void NodusInRange_Double_Solve(void const* in, void* out) noexcept
{
    solve<inRange<Double>>(in, out);
}
void NodusInRange_Float_Solve(void const* in, void* out) noexcept
{
    solve<inRange<Float>>(in, out);
}
void NodusInRange_Float2_Solve(void const* in, void* out) noexcept
{
    solve<inRange<Float2>>(in, out);
}
void NodusInRange_Float3_Solve(void const* in, void* out) noexcept
{
    solve<inRange<Float3>>(in, out);
}
void NodusInRange_Float4_Solve(void const* in, void* out) noexcept
{
    solve<inRange<Float4>>(in, out);
}
void NodusInRange_Quaternion_Solve(void const* in, void* out) noexcept
{
    solve<inRange<Quaternion>>(in, out);
}
void NodusInRange_Translation_Solve(void const* in, void* out) noexcept
{
    solve<inRange<Translation>>(in, out);
}
void NodusInRange_Int32_Solve(void const* in, void* out) noexcept
{
    solve<inRange<Int32>>(in, out);
}
void NodusInRange_UInt32_Solve(void const* in, void* out) noexcept
{
    solve<inRange<UInt32>>(in, out);
}
void NodusInRange_UInt8_Solve(void const* in, void* out) noexcept
{
    solve<inRange<UInt8>>(in, out);
}
