// A kernel over operands of any shape, as NumPy broadcasts them.
#pragma once

#include "arguments.h"

#include <span>

namespace nodus::python {

// Ports of one kernel, inputs, outputs and the frames.
inline constexpr std::size_t kMostOperands = 16;

// One for each output port.
using Results = std::vector<pybind11::object>;

// inputs: one for each port, in their order; frames: Int32, or null where the kernel never asks;
// out: for each output port the caller's array for it, or none.
// The interpreter lock is free while many rows are computed, and a signal ends that. Throws
// pybind11::error_already_set.
Results callRows(host::NodeType const& type, runtime::RowsOfKernel const& rows,
                 std::span<Operand> inputs, Operand* frames, std::span<pybind11::object const> out);

// What logging nodes said, "frame 12: text" a line, to Python's logging.
bool isLogWanted();
void passOnLog(std::string_view lines);
// Who takes it: two functions of Python.
void setLog(pybind11::object isWanted, pybind11::object take);

}  // namespace nodus::python
