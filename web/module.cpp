// The module where nothing can be loaded: the kernels are linked, in the order of the list.
#include "nodus/host/module.h"
#include "nodus/host/diagnostics.h"

#include "kernels.h"

namespace nodus::host {

Module::Module(std::string const& path)
    : m_path(path), m_name("nodusmath"), m_library(nullptr, nullptr),
      m_rowsLibrary(nullptr, nullptr)
{
#define NODUS_KERNEL(name) m_kernels.push_back({#name, "(*,*)", reinterpret_cast<void*>(&name)});
#define NODUS_GENERATOR(name)                                                                      \
    m_kernels.push_back({#name, "(*,*,*)", reinterpret_cast<void*>(&name)});
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR
}

Module::~Module() = default;

void const* Module::symbol(std::string const&) const { return nullptr; }

// No library lies beside it.
runtime::RowsOfKernel Module::rowsOf(std::string const&) const { return {}; }

// Beside the path that the module is given, as if it lay there.
std::string Module::cataloguePath() const
{
    auto const slash = m_path.rfind('/');
    return (slash == m_path.npos ? "" : m_path.substr(0, slash + 1)) + m_name + ".json";
}

}  // namespace nodus::host
