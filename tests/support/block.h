// A port block as a host lays it out, between guard bytes that must come back unchanged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace nodus::test {

inline constexpr std::byte kGuard{0xA5};
inline constexpr std::size_t kGuardSize = 64;

// Guard bytes before the first port, in all padding and behind the last port.
class Block {
public:
    explicit Block(std::size_t extent) : m_bytes(extent + 2 * kGuardSize + 16, kGuard) {}

    // A multiple of 16.
    std::byte* data()
    {
        auto const address = reinterpret_cast<std::uintptr_t>(m_bytes.data());
        return m_bytes.data() + (16 - address % 16) % 16 + kGuardSize;
    }
    std::size_t offset() { return static_cast<std::size_t>(data() - m_bytes.data()); }
    // All of them; the block begins at offset().
    std::vector<std::byte> const& bytes() const { return m_bytes; }

private:
    std::vector<std::byte> m_bytes;
};

}  // namespace nodus::test
