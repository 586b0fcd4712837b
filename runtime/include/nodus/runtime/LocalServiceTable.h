// The services that a host lends to the kernels of one evaluation.
#pragma once

#include "nodus/Export.h"

#include <cstddef>

namespace nodus::runtime {

// Where logging kernels send their messages. Kernels call message() through the third entry of the
// virtual table; the destructor owns the first two. An implementation must accept calls from every
// thread that evaluates with it, may not throw, and copies what it keeps: the text, at most 511
// characters and a NUL, lives only during the call.
class NODUS_API LogService {
public:
    virtual ~LogService();
    virtual void message(char const* text) = 0;
};

// Pointer-sized fields; kernels read the sixth and leave the others to the host.
struct LocalServiceTable {
    void* reserved[5] = {};
    LogService* log = nullptr;  // null: nobody listens, messages are dropped
};
static_assert(offsetof(LocalServiceTable, log) == 5 * sizeof(void*));

// The table of the innermost EvaluationScope of the calling thread; null outside of any.
NODUS_API LocalServiceTable const* GetLocalServiceTable() noexcept;

}  // namespace nodus::runtime
