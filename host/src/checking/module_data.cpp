// Where the system's loader has put the writable segments of a module.
#include "module_data.h"

#include <link.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <numeric>
#include <utility>

namespace nodus::host {

namespace {

using Places = std::vector<std::span<std::byte const>>;

struct Search {
    std::byte const* inside;  // the library that is looked for
    Places places;
};

bool contains(dl_phdr_info const& library, std::uintptr_t address)
{
    return std::any_of(library.dlpi_phdr, library.dlpi_phdr + library.dlpi_phnum,
                       [&](ElfW(Phdr) const& segment) {
                           std::uintptr_t const begin = library.dlpi_addr + segment.p_vaddr;
                           return segment.p_type == PT_LOAD && address >= begin &&
                                  address < begin + segment.p_memsz;
                       });
}

[[maybe_unused]] int visit(dl_phdr_info* library, std::size_t, void* context)
{
    Search& search = *static_cast<Search*>(context);
    auto const inside = reinterpret_cast<std::uintptr_t>(search.inside);
    if (!contains(*library, inside))
        return 0;
    for (ElfW(Half) i = 0; i < library->dlpi_phnum; ++i)
        if (ElfW(Phdr) const& segment = library->dlpi_phdr[i];
            segment.p_type == PT_LOAD && (segment.p_flags & PF_W) != 0)
            search.places.emplace_back(
                search.inside + (library->dlpi_addr + segment.p_vaddr - inside), segment.p_memsz);
    return 1;
}

}  // namespace

ModuleData::ModuleData(Module const& module)
{
    Search search{static_cast<std::byte const*>(module.kernels().front().entry), {}};
// The address sanitizer guards such data itself, by zones between them that nobody may read.
#ifndef __SANITIZE_ADDRESS__
    ::dl_iterate_phdr(visit, &search);
#endif
    m_places = std::move(search.places);
}

void ModuleData::remember()
{
    m_remembered.clear();
    for (auto const& place : m_places)
        m_remembered.emplace_back(place.begin(), place.end());
}

std::size_t ModuleData::countChanges() const
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < m_places.size(); ++i)
        count += static_cast<std::size_t>(std::inner_product(
            m_places[i].begin(), m_places[i].end(), m_remembered[i].begin(), std::size_t{0},
            std::plus<>(), [](std::byte now, std::byte then) { return now != then ? 1 : 0; }));
    return count;
}

}  // namespace nodus::host
