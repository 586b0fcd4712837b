// What callers hand to a kernel's ports: numbers as they are written, and arrays.
#pragma once

#include "array_types.h"

#include "nodus/String.h"
#include "nodus/host/catalogue.h"

namespace nodus::python {

// Which port of which kernel, for messages.
struct PortName {
    std::string_view kernel, port;

    // Sets a TypeError, or another one: "Add_Float3: port 'a' wants Float3, ...".
    void refuse(std::string const& why, PyObject* error = PyExc_TypeError) const;
    // Throws it, too.
    [[noreturn]] void fail(std::string const& why, PyObject* error = PyExc_TypeError) const;
};

// One port through the shape of a call: where its values lie.
struct Operand {
    std::byte* first = nullptr;
    Shape shape, strides;    // without those of a value's own lanes
    pybind11::object array;  // keeps the values; none for texts
    std::vector<String> texts;

    // Of texts or arrays made for the purpose: one value behind the other.
    void laySideBySide(std::span<npy_intp const> extents, npy_intp size);
    // Where an array has its values; its last axes are a value's own.
    static Operand in(pybind11::object array, ArrayType const& type);
};

// As str has it: "float32", "1e+300".
std::string textOf(pybind11::handle object);

enum class Read { done, other, refused };

// A single value that needs no array to be understood, to its place in a block. other: something
// else, for which readArray is the right one; refused: a Python error is set.
Read readValue(PyObject* given, host::ValueType const& type, std::byte* to, PortName name);

// Anything that NumPy makes an array of, in the port's type: read where it lies when it has the
// type, converted when nothing is lost. Numbers that are no array yet are rounded once, as a graph
// file's are. Throws pybind11::error_already_set.
Operand readArray(PyObject* given, host::ValueType const& type, PortName name);

}  // namespace nodus::python
