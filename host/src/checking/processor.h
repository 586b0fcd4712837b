// All that the check knows of processors: what of their state a call must leave as it was, and the
// floating-point exceptions that it raised.
#pragma once

#include <cstdint>

namespace nodus::host {

struct ProcessorState {
    // Rounding, traps, flushing of subnormals, the direction of string instructions.
    std::uint64_t control[3] = {};
    bool stackIsEmpty = true;  // of the x87 unit, where there is one
    bool invalid = false, dividesByZero = false, overflows = false;

    bool hasControlOf(ProcessorState const& other) const
    {
        return control[0] == other.control[0] && control[1] == other.control[1] &&
               control[2] == other.control[2];
    }
};

// For the calling thread. Nothing that was compiled as usual may run between a call that is tried
// and these: it relies on the state that the call may have left otherwise.
ProcessorState processorState();
void restoreProcessor(ProcessorState const& state);
// No exception is raised any more.
void clearExceptions();

}  // namespace nodus::host
