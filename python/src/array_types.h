// The value types as NumPy knows them: an element type, and the shape of one value.
#pragma once

#include "numpy.h"

#include "nodus/host/value_types.h"

#include <array>
#include <span>
#include <string>
#include <vector>

namespace nodus::python {

// A Float3 is three float32, a Matrix4x4 four by four; a TQS is one record of three parts.
struct ArrayType {
    host::ValueType const* type;
    int element;  // NumPy's number; NPY_VOID for TQS, NPY_OBJECT for String
    int dimensions;
    std::array<npy_intp, 2> shape;

    std::span<npy_intp const> core() const
    {
        return {shape.data(), static_cast<std::size_t>(dimensions)};
    }
    // "(..., 3)"
    std::string shapeText() const;
    // Of an element, a new reference.
    PyArray_Descr* descr() const;
    // Whether arrays with that description have such elements.
    bool fits(PyArray_Descr* descr) const;
    // Whether the array's last axes are those of a value.
    bool isCoreOf(PyArrayObject* array) const;
    // Whether kernels may read and write the values where they lie.
    bool liesWell(PyArrayObject* array) const;
};

// Prepares descr() for TQS. Throws pybind11::error_already_set.
void prepareArrayTypes();

ArrayType const& arrayType(host::TypeId id);

// Axes in the order of an array's.
using Shape = std::vector<npy_intp>;

std::span<npy_intp const> shapeOf(PyArrayObject* array);
// How many elements an array of that shape has.
npy_intp countOf(std::span<npy_intp const> shape);

// "(4, 3)", as Python writes it.
std::string shapeText(std::span<npy_intp const> shape);

}  // namespace nodus::python
