// NumPy's functions, one table for all files of the extension.
#pragma once

#define NPY_NO_DEPRECATED_API NPY_1_7_API_VERSION
#define PY_ARRAY_UNIQUE_SYMBOL nodusmath_numpy
#ifndef NODUSMATH_LOADS_NUMPY
#define NO_IMPORT_ARRAY
#endif
// Python's header comes before all others.
#include <pybind11/pybind11.h>

#include <numpy/arrayobject.h>
#include <numpy/arrayscalars.h>

namespace nodus::python {

inline PyArrayObject* asArray(pybind11::handle object)
{
    return reinterpret_cast<PyArrayObject*>(object.ptr());
}

}  // namespace nodus::python
