// Calls a kernel as a host does: ports packed into aligned blocks, with guard bytes around them
// that must come back unchanged. With what most tests of kernels share.
#pragma once

#include "kernels.h"
#include "ports.h"
#include "support/block.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace nodus::test {

using namespace nodusmath;
using Kernel = void(void const*, void*) noexcept;

inline constexpr float kInfinity = std::numeric_limits<float>::infinity();
inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
inline constexpr Int32 kLowest = std::numeric_limits<Int32>::min();
inline constexpr Int32 kHighest = std::numeric_limits<Int32>::max();

template <typename... Ports> Block blockOf(Ports const&... ports)
{
    auto const offsets = packedOffsets<Ports...>;
    Block block(offsets[sizeof...(Ports)]);
    std::size_t port = 0;
    ((std::memcpy(block.data() + offsets[port++], &ports, sizeof ports)), ...);
    return block;
}

// For kernels of one output.
template <typename Out, typename Function, typename... Ports>
Out call(Function* kernel, Ports const&... ports)
{
    Block in = blockOf(ports...), out(sizeof(Out));
    auto const inBefore = in.bytes();
    auto outAfter = out.bytes();
    (*kernel)(in.data(), out.data());

    EXPECT_EQ(in.bytes(), inBefore) << "the kernel wrote to its input block";
    std::memcpy(outAfter.data() + out.offset(), out.data(), sizeof(Out));
    EXPECT_EQ(out.bytes(), outAfter) << "the kernel wrote around its output";
    Out result;
    std::memcpy(&result, out.data(), sizeof result);
    return result;
}

// The bits of a value, to compare what == cannot see: -0 and the payload of a NaN. Words of four
// bytes, or the one value of a type that is smaller or a double.
template <typename T> auto bits(T const& value)
{
    if constexpr (sizeof(T) == 1)
        return std::bit_cast<std::uint8_t>(value);
    else if constexpr (sizeof(T) == 4)
        return std::bit_cast<std::uint32_t>(value);
    else if constexpr (std::is_same_v<T, double>)
        return std::bit_cast<std::uint64_t>(value);
    else
        return std::bit_cast<std::array<std::uint32_t, sizeof(T) / 4>>(value);
}

}  // namespace nodus::test
