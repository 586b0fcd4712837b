// A kernel as a Python function.
#pragma once

#include "numpy.h"

#include "nodus/host/catalogue.h"

namespace nodus::python {

// Prepares the type; once. Throws pybind11::error_already_set.
pybind11::object prepareKernels();

// A callable that lives as long as it likes: node types are never unloaded. results: what makes a
// tuple of several outputs, or None. help: a Python function that describes a kernel's name.
// Throws pybind11::error_already_set.
pybind11::object makeKernel(host::NodeType const& type, pybind11::object results,
                            pybind11::object help);

}  // namespace nodus::python
