// The registration record: a module defines one static NodusAutoSymbol per kernel, and the kernel
// is known to the host from the record's construction to its destruction.
#pragma once

#include "nodus/Export.h"

namespace nodus::runtime {

class KernelList;

// Name, signature and entry point, and the record's two neighbours in the host's list: registering
// allocates nothing and cannot fail. The module keeps the strings alive as long as the record.
// Records may be built and destroyed on any thread.
class NODUS_API NodusAutoSymbol {
public:
    // signature: one '*' per pointer parameter of the entry point, as in "(*,*)".
    NodusAutoSymbol(char const* name, char const* signature, void const* entry) noexcept;
    ~NodusAutoSymbol();

    NodusAutoSymbol(NodusAutoSymbol const&) = delete;
    NodusAutoSymbol& operator=(NodusAutoSymbol const&) = delete;

private:
    friend class KernelList;

    NodusAutoSymbol* m_previous;
    NodusAutoSymbol* m_next;
    char const* m_name;
    char const* m_signature;
    void const* m_entry;
};

static_assert(sizeof(NodusAutoSymbol) == 5 * sizeof(void*));

}  // namespace nodus::runtime
