// Memory between unreadable pages.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <new>

namespace nodus::host {

// A block with what lies around it in the same page, all of which must be left alone.
struct Zone {
    std::byte* begin;
    std::size_t size;
    std::byte* block;
};

// Pages that can be written, with many before and behind them that cannot even be read: what
// reaches far beyond a block meets no neighbour. They take addresses, but no memory.
class GuardedPages {
public:
    static constexpr std::size_t kPage = 4096;
    static constexpr std::size_t kAlignment = 16;
    static constexpr std::size_t kAround = 64;
    static constexpr std::size_t kReserve = std::size_t{16} << 20;

    explicit GuardedPages(std::size_t size) : m_size((size + kAround + kPage - 1) / kPage * kPage)
    {
        void* const pages = ::mmap(nullptr, m_size + 2 * kReserve, PROT_NONE,
                                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (pages == MAP_FAILED)
            throw std::bad_alloc();
        m_begin = static_cast<std::byte*>(pages) + kReserve;
        if (::mprotect(m_begin, m_size, PROT_READ | PROT_WRITE) != 0)
            throw std::bad_alloc();
    }
    ~GuardedPages() { ::munmap(m_begin - kReserve, m_size + 2 * kReserve); }
    GuardedPages(GuardedPages const&) = delete;
    GuardedPages& operator=(GuardedPages const&) = delete;

    // As near to the page behind it as the alignment of blocks allows.
    Zone last(std::size_t extent) const
    {
        std::size_t const size = aligned(extent) + kAround;
        std::byte* const begin = m_begin + m_size - size;
        return {begin, size, begin + kAround};
    }
    // Right behind the page before it.
    Zone first(std::size_t extent) const { return {m_begin, aligned(extent) + kAround, m_begin}; }

private:
    static std::size_t aligned(std::size_t extent)
    {
        return (extent + kAlignment - 1) / kAlignment * kAlignment;
    }

    std::size_t m_size;
    std::byte* m_begin;
};

}  // namespace nodus::host
