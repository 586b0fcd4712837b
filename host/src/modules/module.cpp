// Loading a module: the system's loader, the records that it registers, and its two hooks.
#include "nodus/host/module.h"

#include "nodus/host/diagnostics.h"
#include "nodus/runtime/KernelTable.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

namespace nodus::host {

namespace {

namespace fs = std::filesystem;

constexpr char kLibrarySuffix[] = ".so";

std::string moduleName(std::string const& path)
{
    std::string const stem = fs::path(path).stem().string();
    return stem.starts_with("lib") ? stem.substr(3) : stem;
}

int close(void* library) { return ::dlclose(library); }

void callHook(void* library, std::string const& name)
{
    if (void* const hook = ::dlsym(library, name.c_str()))
        reinterpret_cast<void (*)()>(hook)();
}

}  // namespace

Module::Module(std::string const& path)
    : m_path(path), m_name(moduleName(path)), m_library(nullptr, &close),
      m_rowsLibrary(nullptr, &close)
{
    if (::access(path.c_str(), R_OK) != 0)
        throw Fault("cannot load module " + path + ": " + systemError(errno));

    std::set<void const*> before;
    for (auto const& kernel : runtime::registeredKernels())
        before.insert(kernel.entry);

    // A bare name would be looked for in the system's folders.
    std::string const place = fs::absolute(path).string();
    m_library.reset(::dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!m_library) {
        char const* const why = ::dlerror();
        throw Fault("cannot load module " + path + ": " + (why != nullptr ? why : "unknown"));
    }
    for (auto const& kernel : runtime::registeredKernels())
        if (!before.contains(kernel.entry))
            m_kernels.push_back({kernel.name, kernel.signature, kernel.entry});
    if (m_kernels.empty() && ::dlsym(m_library.get(), (m_name + "_loadModule").c_str()) == nullptr)
        throw Fault("cannot load module " + path +
                    ": it is a library, but not a module: it has no " + m_name +
                    "_loadModule and registers no kernel");
    if (m_kernels.empty())
        throw Fault("module " + path + ": it is loaded already, or has no kernels");

    Diagnostics diagnostics;
    // A whole module that is there twice is one fault, not one for each of its kernels.
    std::map<std::pair<std::string, std::string>, std::vector<std::string_view>> shared;
    for (auto const& twice : runtime::duplicateKernels())
        shared[{twice.firstFile, twice.secondFile}].push_back(twice.name);
    for (auto const& [files, names] : shared)
        diagnostics.add("modules " + files.first + " and " + files.second + " both have " +
                        std::string(names.front()) +
                        (names.size() == 1 ? ""
                                           : " and " + std::to_string(names.size() - 1) +
                                                 " more kernel" + (names.size() == 2 ? "" : "s")));
    diagnostics.throwIfAny();
    callHook(m_library.get(), m_name + "_loadModule");
}

Module::~Module()
{
    if (m_library)
        callHook(m_library.get(), m_name + "_unloadModule");
}

void const* Module::symbol(std::string const& name) const
{
    return ::dlsym(m_library.get(), name.c_str());
}

runtime::RowsOfKernel Module::rowsOf(std::string const& kernel) const
{
    std::call_once(m_rowsAreLoaded, [&] {
        fs::path const path =
            fs::absolute(m_path).parent_path() / ("lib" + m_name + "_rows" + kLibrarySuffix);
        if (!fs::exists(path))
            return;
        m_rowsLibrary.reset(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
        if (!m_rowsLibrary) {
            char const* const why = ::dlerror();
            throw Fault("cannot load " + path.string() + ": " + (why != nullptr ? why : "unknown") +
                        "; nodus eval --one-by-one does without it");
        }
        m_findRows =
            reinterpret_cast<runtime::FindRows>(::dlsym(m_rowsLibrary.get(), "nodusRowsOf"));
    });
    return m_findRows != nullptr ? m_findRows(kernel.c_str()) : runtime::RowsOfKernel{};
}

std::string Module::cataloguePath() const
{
    return (fs::path(m_path).parent_path() / (m_name + ".json")).string();
}

}  // namespace nodus::host
