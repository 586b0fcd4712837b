// Calls a kernel as a host does: ports packed into aligned blocks, with guard bytes around them
// that must come back unchanged.
#pragma once

#include "ports.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace nodus::test {

inline constexpr std::byte kGuard{0xA5};
inline constexpr std::size_t kGuardSize = 64;

// The bytes of a block with guard bytes in all padding and behind the last port.
class Block {
public:
    explicit Block(std::size_t extent) : m_bytes(extent + kGuardSize + 16, kGuard), m_extent(extent)
    {
    }

    std::byte* data()
    {
        auto const address = reinterpret_cast<std::uintptr_t>(m_bytes.data());
        return m_bytes.data() + (16 - address % 16) % 16;
    }
    std::vector<std::byte> bytes() { return {data(), data() + m_extent + kGuardSize}; }

private:
    std::vector<std::byte> m_bytes;
    std::size_t m_extent;
};

template <typename... Ports> Block blockOf(Ports const&... ports)
{
    auto const offsets = nodusmath::packedOffsets<Ports...>;
    Block block(offsets[sizeof...(Ports)]);
    std::size_t port = 0;
    ((std::memcpy(block.data() + offsets[port++], &ports, sizeof ports)), ...);
    return block;
}

// What the output block holds after the call, if it held `before` and the kernel is given `ports`.
template <typename Out, typename Kernel, typename... Ports>
Out callOver(Out const& before, Kernel* kernel, Ports const&... ports)
{
    Block in = blockOf(ports...);
    Block out = blockOf(before);
    auto const inBefore = in.bytes();
    auto const outBefore = out.bytes();

    (*kernel)(in.data(), out.data());

    EXPECT_EQ(in.bytes(), inBefore) << "the kernel wrote to its input block";
    EXPECT_TRUE(
        std::equal(outBefore.begin() + sizeof(Out), outBefore.end(), out.data() + sizeof(Out)))
        << "the kernel wrote behind its last output port";
    Out after;
    std::memcpy(&after, out.data(), sizeof after);
    return after;
}

template <typename Out, typename Kernel, typename... Ports>
Out call(Kernel* kernel, Ports const&... ports)
{
    Out before;
    std::memset(static_cast<void*>(&before), static_cast<int>(kGuard), sizeof before);
    return callOver(before, kernel, ports...);
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
