// Which kernels there are over rows, by name.

// Only who defines an entry point chooses between processors.
#define NODUS_ENTRY
#include "kernels.h"
#include "row_loops.h"

#include "nodus/Export.h"
#include "nodus/runtime/KernelTable.h"

#include <cstddef>
#include <iterator>
#include <string_view>

using namespace nodusmath;
using nodus::runtime::RowsOfKernel;
using nodus::runtime::RowsOfPort;

namespace {

using Entry = void (*)(void const*, void*) noexcept;

enum Place : std::size_t {
#define NODUS_KERNEL(name) k##name,
#define NODUS_GENERATOR(name) k##name,
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR
    kCount
};

constexpr char const* kNames[] = {
#define NODUS_KERNEL(name) #name,
#define NODUS_GENERATOR(name) #name,
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR
};

// Where the list has a generator's Init kernel, in front of the Solve kernel.
constexpr Entry kInits[] = {
#define NODUS_KERNEL(name) &name,
#define NODUS_GENERATOR(name) nullptr,
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR
};

template <Entry entry, std::size_t place>
void solveRows(std::size_t count, RowsOfPort const* ports, std::int32_t const* frames)
{
    RowsCall const call{kNames[place], count, ports, frames};
    entry(&call, nullptr);
}

template <void (*entry)(void const*, void*, void*) noexcept, std::size_t place>
void solveGeneratorRows(std::size_t count, RowsOfPort const* ports, std::int32_t const* frames)
{
    if (count == 0)
        return;
    RowsCall const call{kNames[place], count, ports, frames};
    alignas(16) std::byte workspace[kWorkspaceRoom];
    kInits[place - 1](&call, workspace);
    entry(&call, workspace, nullptr);
}

RowsOfKernel needsOf(Entry entry)
{
    RowsOfKernel needs{};
    entry(nullptr, &needs);
    return needs;
}
RowsOfKernel needsOf(void (*entry)(void const*, void*, void*) noexcept)
{
    RowsOfKernel needs{};
    entry(nullptr, nullptr, &needs);
    return needs;
}

struct Listed {
    std::string_view name;
    nodus::runtime::SolveRows solve;
    RowsOfKernel (*needs)();
};
constexpr Listed kListed[] = {
#define NODUS_KERNEL(name) {#name, solveRows<&name, k##name>, [] { return needsOf(&name); }},
#define NODUS_GENERATOR(name)                                                                      \
    {#name, solveGeneratorRows<&name, k##name>, [] { return needsOf(&name); }},
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR
};
static_assert(std::size(kListed) == kCount);

}  // namespace

extern "C" NODUS_API RowsOfKernel nodusRowsOf(char const* kernel);

RowsOfKernel nodusRowsOf(char const* kernel)
{
    std::string_view const name = kernel;
    for (Listed const& listed : kListed)
        if (listed.name == name && !name.ends_with("_Init") && nodus::runtime::findKernel(name)) {
            RowsOfKernel found = listed.needs();
            found.solve = listed.solve;
            return found;
        }
    return {};
}
