// MultiplyByScalar: every lane of value times scalar, the fourth lane of a Float4 included.
#include "kernels.h"
#include "lanewise.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> T scale(T const& value, Float scalar) noexcept
{
    return lanewise(value, [scalar](auto x) {
        // Lanes that are not there are zeros, which an infinite scalar must not meet.
        if constexpr (std::is_same_v<decltype(x), qvr::_vec4> && !FourLaned<T>)
            return x * qvr::pairOf(scalar);
        else
            return x * scalar;
    });
}

}  // namespace

void NodusMultiplyByScalar_Float2_Solve(void const* in, void* out) noexcept
{
    solve<scale<Float2>>(in, out);
}
void NodusMultiplyByScalar_Float3_Solve(void const* in, void* out) noexcept
{
    solve<scale<Float3>>(in, out);
}
void NodusMultiplyByScalar_Float4_Solve(void const* in, void* out) noexcept
{
    solve<scale<Float4>>(in, out);
}
