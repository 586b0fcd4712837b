// A graph that can be evaluated, for Python's Graph.
#pragma once

#include "numpy.h"

#include "nodus/host/catalogue.h"

namespace nodus::python {

// Adds the class Program to the module. The catalogue outlives it.
void addProgram(pybind11::module_& module, host::Catalogue const& catalogue);

}  // namespace nodus::python
