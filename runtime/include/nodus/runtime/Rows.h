// Kernels over many rows at once: what a library beside a module may offer, so that tables, images
// and arrays cost what a loop costs. For libNAME.so it is libNAME_rows.so, with one function.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nodus::runtime {

// One port through all rows: row i lies at first + i * stride, aligned as its type is. With a
// stride of 0 an input has the same value in every row.
struct RowsOfPort {
    void* first;
    std::ptrdiff_t stride;
};

// Does for each of count rows, in their order, what the kernel does for a node, bit for bit. The
// ports are the inputs and then the outputs, as the kernel's blocks have them; no output overlaps
// an input or another output. Row i is evaluated at frames[i]; where a kernel never asks for the
// frame, frames may be null. Any thread may call, within an EvaluationScope if the kernel logs.
using SolveRows = void (*)(std::size_t count, RowsOfPort const* ports, std::int32_t const* frames);

struct RowsOfKernel {
    SolveRows solve;   // null when there is none, or the module is not loaded
    bool needsFrames;  // it is evaluated row by row, each at its frame
    bool
        needsServices;  // it logs: it is called for every row, and also when nobody reads its ports
};

// The exported function: "nodusRowsOf", called with a kernel's name ("NodusAdd_Float_Solve"). A
// node with a workspace is known by the name of its Solve kernel and brings a workspace of its own.
// What is found can be called as long as module and library stay loaded.
using FindRows = RowsOfKernel (*)(char const* kernel);

}  // namespace nodus::runtime
