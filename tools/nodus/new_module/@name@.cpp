// The node types of @name@. A kernel's function has its input ports as parameters, in the order of the
// catalogue, and its output port as result; solve hands it the blocks. It throws and keeps nothing,
// answers every input and may be called from any thread.
#include "kernels.h"

using namespace nodusmath;

namespace {

// From a at t = 0 to b at t = 1, exact at both ends; t is not clamped.
Float mix(Float const& a, Float const& b, Float const& t) noexcept { return a * (1 - t) + b * t; }

Float3 mixFloat3(Float3 const& a, Float3 const& b, Float const& t) noexcept
{
    return {mix(a.x, b.x, t), mix(a.y, b.y, t), mix(a.z, b.z, t)};
}

}  // namespace

void Nodus@Name@Mix_Float_Solve(void const* in, void* out) noexcept { solve<mix>(in, out); }
void Nodus@Name@Mix_Float3_Solve(void const* in, void* out) noexcept { solve<mixFloat3>(in, out); }
