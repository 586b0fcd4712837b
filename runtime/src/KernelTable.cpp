// The list of registration records and the look-ups on it.
#include "nodus/runtime/KernelTable.h"
#include "nodus/runtime/NodusAutoSymbol.h"

#include <dlfcn.h>

#include <mutex>
#include <unordered_map>

namespace nodus::runtime {

namespace {

std::string fileOf(void const* entry)
{
    Dl_info info{};
    return dladdr(entry, &info) != 0 && info.dli_fname != nullptr ? info.dli_fname : "unknown file";
}

}  // namespace

// Records chained in the order of registration. Modules register while they are being loaded, which
// may be before this library's own dynamic initialisation: everything here is constant-initialised
// and nothing is destroyed.
class KernelList {
public:
    static void append(NodusAutoSymbol& record) noexcept
    {
        std::lock_guard const lock(s_mutex);
        record.m_previous = s_last;
        record.m_next = nullptr;
        (s_last != nullptr ? s_last->m_next : s_first) = &record;
        s_last = &record;
    }

    static void remove(NodusAutoSymbol& record) noexcept
    {
        std::lock_guard const lock(s_mutex);
        (record.m_previous != nullptr ? record.m_previous->m_next : s_first) = record.m_next;
        (record.m_next != nullptr ? record.m_next->m_previous : s_last) = record.m_previous;
    }

    // Calls visit for each record until it returns true.
    template <typename Visit> static void visitUntil(Visit visit)
    {
        std::lock_guard const lock(s_mutex);
        for (NodusAutoSymbol const* record = s_first; record != nullptr; record = record->m_next)
            if (visit(RegisteredKernel{record->m_name, record->m_signature, record->m_entry}))
                return;
    }

private:
    static constinit std::mutex s_mutex;
    static constinit NodusAutoSymbol* s_first;
    static constinit NodusAutoSymbol* s_last;
};

constinit std::mutex KernelList::s_mutex;
constinit NodusAutoSymbol* KernelList::s_first = nullptr;
constinit NodusAutoSymbol* KernelList::s_last = nullptr;

NodusAutoSymbol::NodusAutoSymbol(char const* name, char const* signature,
                                 void const* entry) noexcept
    : m_previous(nullptr), m_next(nullptr), m_name(name), m_signature(signature), m_entry(entry)
{
    KernelList::append(*this);
}

NodusAutoSymbol::~NodusAutoSymbol() { KernelList::remove(*this); }

std::optional<RegisteredKernel> findKernel(std::string_view name)
{
    std::optional<RegisteredKernel> found;
    KernelList::visitUntil([&](RegisteredKernel const& kernel) {
        if (kernel.name == name)
            found = kernel;
        return found.has_value();
    });
    return found;
}

std::vector<RegisteredKernel> registeredKernels()
{
    std::vector<RegisteredKernel> all;
    KernelList::visitUntil([&](RegisteredKernel const& kernel) {
        all.push_back(kernel);
        return false;
    });
    return all;
}

std::vector<DuplicateKernel> duplicateKernels()
{
    // The loader is asked for file names only after the list is free again: a thread that loads a
    // module holds the loader's lock while its records wait for the list.
    std::vector<DuplicateKernel> duplicates;
    std::unordered_map<std::string_view, void const*> entries;
    for (RegisteredKernel const& kernel : registeredKernels()) {
        auto const [first, isNew] = entries.emplace(kernel.name, kernel.entry);
        if (!isNew)
            duplicates.push_back({kernel.name, fileOf(first->second), fileOf(kernel.entry)});
    }
    return duplicates;
}

}  // namespace nodus::runtime
