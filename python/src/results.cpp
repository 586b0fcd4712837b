// Arrays for results: made, or checked and written to.
#include "results.h"

#include <algorithm>
#include <cstdint>

namespace nodus::python {

namespace py = pybind11;

namespace {

// Of that shape, nothing written yet.
Operand makeOperand(host::Port const& port, Shape const& shape, bool isCleared)
{
    ArrayType const& type = arrayType(port.type->id);
    Operand made;
    made.laySideBySide(shape, static_cast<npy_intp>(port.type->size));
    if (type.element == NPY_OBJECT) {
        made.texts.resize(static_cast<std::size_t>(countOf(shape)));
        made.first = reinterpret_cast<std::byte*>(made.texts.data());
        return made;
    }
    Shape whole = shape;
    whole.insert(whole.end(), type.core().begin(), type.core().end());
    if (whole.size() > NPY_MAXDIMS) {
        PyErr_SetString(PyExc_ValueError, "an array has at most 32 axes");
        throw py::error_already_set();
    }
    auto const make = isCleared ? PyArray_Zeros : PyArray_Empty;
    made.array = py::reinterpret_steal<py::object>(
        make(static_cast<int>(whole.size()), whole.data(), type.descr(), 0));
    if (!made.array)
        throw py::error_already_set();
    made.first = static_cast<std::byte*>(PyArray_DATA(asArray(made.array)));
    return made;
}

py::object textsOf(Operand const& result)
{
    py::list const texts = listOf(result.texts);
    if (result.shape.empty())
        return texts[0];
    py::object array = py::module_::import("numpy").attr("empty")(texts.size(), "O");
    array[py::slice(0, static_cast<py::ssize_t>(texts.size()), 1)] = texts;
    py::tuple shape(result.shape.size());
    for (std::size_t i = 0; i < result.shape.size(); ++i)
        shape[i] = result.shape[i];
    return array.attr("reshape")(shape);
}

// From the first byte of any element to behind the last.
std::pair<std::intptr_t, std::intptr_t> boundsOf(PyArrayObject* array)
{
    auto low = reinterpret_cast<std::intptr_t>(PyArray_DATA(array));
    std::intptr_t high = low + PyArray_ITEMSIZE(array);
    for (int i = 0; i < PyArray_NDIM(array); ++i) {
        std::intptr_t const reach = (PyArray_DIM(array, i) - 1) * PyArray_STRIDE(array, i);
        (reach < 0 ? low : high) += reach;
    }
    return {low, high};
}

// Arrays that lie between each other's elements count as sharing it.
bool mayShareMemory(PyArrayObject* a, PyArrayObject* b)
{
    auto const [lowA, highA] = boundsOf(a);
    auto const [lowB, highB] = boundsOf(b);
    return lowA < highB && lowB < highA;
}

}  // namespace

Result::Result(host::NodeType const& type, host::Port const& port, py::object out)
    : m_type(&type), m_port(&port), m_out(std::move(out))
{
    if (!m_out)
        return;
    if (!PyArray_Check(m_out.ptr()))
        fail(std::string("an array, not ") + Py_TYPE(m_out.ptr())->tp_name, PyExc_TypeError);
    PyArrayObject* const array = asArray(m_out);
    ArrayType const& wanted = arrayType(port.type->id);
    if (!wanted.fits(PyArray_DESCR(array))) {
        auto const descr =
            py::reinterpret_steal<py::object>(reinterpret_cast<PyObject*>(wanted.descr()));
        fail("an array of " + textOf(descr) + ", not of " + textOf(m_out.attr("dtype")),
             PyExc_TypeError);
    }
    if (!PyArray_ISWRITEABLE(array))
        fail("an array that may be written to, not one to be read only", PyExc_ValueError);
    if (!wanted.isCoreOf(array))
        fail("an array of shape " + wanted.shapeText() + ", not " + shapeText(shapeOf(array)),
             PyExc_ValueError);
    m_given = Operand::in(m_out, wanted);
}

void Result::refuseShape(Shape const& wanted) const
{
    Shape whole = wanted;
    auto const core = arrayType(m_port->type->id).core();
    whole.insert(whole.end(), core.begin(), core.end());
    fail("an array of shape " + shapeText(whole) + ", not " + shapeText(shapeOf(asArray(m_out))),
         PyExc_ValueError);
}

void Result::fail(std::string const& why, PyObject* error) const
{
    PyErr_SetString(error,
                    (m_type->name + ": out wants " + why + " for '" + m_port->name + "'").c_str());
    throw py::error_already_set();
}

Operand& Result::prepare(Shape const& shape, std::vector<py::object>& inUse)
{
    if (m_out) {
        ArrayType const& type = arrayType(m_port->type->id);
        // What a kernel leaves alone is 0, whatever the caller's array had; and rows that are
        // written may not be inputs of others.
        m_isDirect = type.element != NPY_OBJECT && !m_type->family->mayKeepOutputs &&
                     type.liesWell(asArray(m_out)) &&
                     std::ranges::none_of(inUse, [&](py::object const& other) {
                         return mayShareMemory(asArray(m_out), asArray(other));
                     });
        inUse.push_back(m_out);
    }
    if (m_isDirect)
        return m_given;
    m_made = makeOperand(*m_port, shape, m_type->family->mayKeepOutputs);
    return m_made;
}

py::object Result::take()
{
    if (m_isDirect)
        return m_out;
    py::object made = m_made.array ? std::move(m_made.array) : textsOf(m_made);
    if (m_out) {
        if (PyArray_CopyObject(asArray(m_out), made.ptr()) != 0)
            throw py::error_already_set();
        return m_out;
    }
    if (!PyArray_Check(made.ptr()))
        return made;
    return py::reinterpret_steal<py::object>(  // an array without axes is a number
        PyArray_Return(asArray(made.release())));
}

py::list listOf(std::vector<String> const& texts)
{
    py::list list;
    for (std::string const& text : texts)
        list.append(py::str(text.data(), text.size()));
    return list;
}

}  // namespace nodus::python
