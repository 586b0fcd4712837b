// What a PNG file asks of libdeflate, without compressing: pictures go no further than to the page
// that shows them. Stored blocks are RFC 1951, what is around them RFC 1950, the sum of a chunk is
// that of PNG, all three of Deutsch and others, 1996.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

struct libdeflate_compressor {};

inline libdeflate_compressor* libdeflate_alloc_compressor(int)
{
    static libdeflate_compressor one;
    return &one;
}
inline void libdeflate_free_compressor(libdeflate_compressor*) {}

inline std::uint32_t libdeflate_crc32(std::uint32_t sum, void const* bytes, std::size_t size)
{
    sum = ~sum;
    for (auto const* byte = static_cast<std::uint8_t const*>(bytes); size > 0; ++byte, --size) {
        sum ^= *byte;
        for (int bit = 0; bit < 8; ++bit)
            sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320u : 0);
    }
    return ~sum;
}

inline std::uint32_t adler32(std::uint8_t const* bytes, std::size_t size)
{
    std::uint32_t low = 1, high = 0;
    for (std::size_t i = 0; i < size; ++i) {
        low = (low + bytes[i]) % 65521;
        high = (high + low) % 65521;
    }
    return high << 16 | low;
}

constexpr std::size_t kStored = 65535;  // bytes of a block at most

inline std::size_t libdeflate_zlib_compress_bound(libdeflate_compressor*, std::size_t size)
{
    return size + 5 * (size / kStored + 1) + 6;
}

inline std::size_t libdeflate_zlib_compress(libdeflate_compressor*, void const* from,
                                            std::size_t size, void* to, std::size_t)
{
    auto const* const bytes = static_cast<std::uint8_t const*>(from);
    auto* out = static_cast<std::uint8_t*>(to);
    auto const put = [&out](std::size_t byte) { *out++ = static_cast<std::uint8_t>(byte); };
    put(0x78);
    put(0x01);
    for (std::size_t at = 0; at == 0 || at < size;) {
        std::size_t const count = std::min(kStored, size - at);
        put(at + count == size);
        for (std::size_t const word : {count, ~count}) {
            put(word);
            put(word >> 8);
        }
        out = std::copy_n(bytes + at, count, out);
        at += std::max<std::size_t>(count, 1);
    }
    std::uint32_t const sum = adler32(bytes, size);
    for (int shift = 24; shift >= 0; shift -= 8)
        put(sum >> shift);
    return static_cast<std::size_t>(out - static_cast<std::uint8_t*>(to));
}
