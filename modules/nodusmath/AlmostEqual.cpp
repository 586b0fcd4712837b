// AlmostEqual: |a - b| <= tolerance in every lane, the difference rounded in the ports' precision.
// An infinity is not almost equal to itself, and nothing is within a NaN or negative tolerance.
#include "comparisons.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T>
using Tolerance = std::conditional_t<std::is_same_v<T, Double>, Double, Float>;

template <typename T>
Bool almostEqual(T const& a, T const& b, Tolerance<T> const& tolerance) noexcept
{
    return everyLane(
        [tolerance](auto x, auto y) {
            return qvr::lessEqual(qvr::magnitude(x - y), inAllLanes<decltype(x)>(tolerance));
        },
        a, b);
}

}  // namespace

void NodusAlmostEqual_Color_Solve(void const* in, void* out) noexcept
{
    solve<almostEqual<Color>>(in, out);
}
void NodusAlmostEqual_Double_Solve(void const* in, void* out) noexcept
{
    solve<almostEqual<Double>>(in, out);
}
void NodusAlmostEqual_Float_Solve(void const* in, void* out) noexcept
{
    solve<almostEqual<Float>>(in, out);
}
void NodusAlmostEqual_Float2_Solve(void const* in, void* out) noexcept
{
    solve<almostEqual<Float2>>(in, out);
}
void NodusAlmostEqual_Float3_Solve(void const* in, void* out) noexcept
{
    solve<almostEqual<Float3>>(in, out);
}
void NodusAlmostEqual_Float4_Solve(void const* in, void* out) noexcept
{
    solve<almostEqual<Float4>>(in, out);
}
void NodusAlmostEqual_Matrix4x4_Solve(void const* in, void* out) noexcept
{
    solve<almostEqual<Matrix4x4>>(in, out);
}
void NodusAlmostEqual_Quaternion_Solve(void const* in, void* out) noexcept
{
    solve<almostEqual<Quaternion>>(in, out);
}
void NodusAlmostEqual_Translation_Solve(void const* in, void* out) noexcept
{
    solve<almostEqual<Translation>>(in, out);
}
