// Loading modules of node kernels.
#pragma once

#include "nodus/runtime/Rows.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

using Solve = void (*)(void const* in, void* out);
using SolveWithWorkspace = void (*)(void const* in, void* workspace, void* out);
using InitWorkspace = void (*)(void const* in, void* workspace);

struct Kernel {
    std::string_view name;       // lives as long as the module
    std::string_view signature;  // one '*' for each pointer
    void const* entry;
};

// A loaded module. Its kernels can be called until it is destroyed, from any thread; everything
// that was made from them (catalogue, plan, evaluators) must be gone by then. Modules are to be
// loaded and unloaded by one thread at a time.
class Module {
public:
    // Throws Fault: no such file, the loader's own words when it is no library that can be loaded,
    // a library that is not a module, or kernels of a name that another module already offers.
    explicit Module(std::string const& path);
    ~Module();
    Module(Module const&) = delete;
    Module& operator=(Module const&) = delete;

    std::string const& path() const { return m_path; }
    // "nodusmath" for lib/libnodusmath.so.
    std::string const& name() const { return m_name; }
    // The catalogue of the module: NAME.json beside it.
    std::string cataloguePath() const;
    std::vector<Kernel> const& kernels() const { return m_kernels; }
    // What the loader finds under that name, or null.
    void const* symbol(std::string const& name) const;
    // The kernel over rows, from the library libNAME_rows.so beside the module; without one, or
    // where it has none of that name, one without solve. The first question loads it, from
    // any thread. Throws Fault when it is there and cannot be loaded.
    runtime::RowsOfKernel rowsOf(std::string const& kernel) const;

private:
    std::string m_path, m_name;
    std::unique_ptr<void, int (*)(void*)> m_library;
    std::vector<Kernel> m_kernels;
    mutable std::once_flag m_rowsAreLoaded;
    mutable std::unique_ptr<void, int (*)(void*)> m_rowsLibrary;
    mutable runtime::FindRows m_findRows = nullptr;
};

}  // namespace nodus::host
