// Calls a kernel on ports that are packed as a host packs them. What lies around them is watched by
// nodus check.
#pragma once

#include "kernels.h"
#include "ports.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nodus::test {

using namespace nodusmath;
using Kernel = void(void const*, void*) noexcept;

template <typename Out, typename... Ports> Out call(Kernel* kernel, Ports const&... ports)
{
    alignas(kBlockAlignment) std::byte in[blockExtent<Ports...>];
    alignas(kBlockAlignment) Out out{};
    std::size_t port = 0;
    (std::memcpy(in + packedOffsets<Ports...>[port++], &ports, sizeof ports), ...);
    kernel(in, &out);
    return out;
}

// The bits of a value, to compare what == cannot see: -0 and the payload of a NaN.
template <typename T> auto bits(T const& value)
{
    return std::bit_cast<std::array<std::uint8_t, sizeof(T)>>(value);
}

}  // namespace nodus::test
