// Which NumPy type each value type is.
#include "array_types.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace nodus::python {

namespace py = pybind11;
using host::TypeId;

namespace {

PyArray_Descr* s_tqs = nullptr;

int elementOf(TypeId lane)
{
    switch (lane) {
    case TypeId::Bool:
        return NPY_BOOL;
    case TypeId::UInt8:
        return NPY_UINT8;
    case TypeId::Int32:
        return NPY_INT32;
    case TypeId::UInt32:
        return NPY_UINT32;
    case TypeId::Double:
        return NPY_FLOAT64;
    case TypeId::String:
        return NPY_OBJECT;
    default:
        return NPY_FLOAT32;
    }
}

ArrayType typeOf(host::ValueType const& type)
{
    if (type.id == TypeId::TQS)
        return {&type, NPY_VOID, 0, {}};
    int const element = elementOf(type.lane);
    if (type.isScalar())
        return {&type, element, 0, {}};
    auto const lanes = static_cast<npy_intp>(type.laneNames.size());
    return lanes == 16 ? ArrayType{&type, element, 2, {4, 4}}
                       : ArrayType{&type, element, 1, {lanes}};
}

}  // namespace

std::string ArrayType::shapeText() const
{
    std::string text = "(...";
    for (npy_intp const extent : core())
        text += ", " + std::to_string(extent);
    return text + ")";
}

PyArray_Descr* ArrayType::descr() const
{
    if (element != NPY_VOID)
        return PyArray_DescrFromType(element);
    Py_INCREF(s_tqs);
    return s_tqs;
}

bool ArrayType::fits(PyArray_Descr* descr) const
{
    if (element != NPY_VOID)
        return descr->type_num == element && PyArray_ISNBO(descr->byteorder);
    return descr == s_tqs || (descr->type_num == NPY_VOID && PyArray_EquivTypes(descr, s_tqs) != 0);
}

bool ArrayType::isCoreOf(PyArrayObject* array) const
{
    auto const all = shapeOf(array);
    return all.size() >= core().size() && std::ranges::equal(all.last(core().size()), core());
}

bool ArrayType::liesWell(PyArrayObject* array) const
{
    auto const alignment = static_cast<npy_intp>(type->alignment);
    int const loops = PyArray_NDIM(array) - dimensions;
    npy_intp next = PyArray_ITEMSIZE(array);
    for (int i = PyArray_NDIM(array) - 1; i >= loops; next *= PyArray_DIM(array, i--))
        if (PyArray_STRIDE(array, i) != next)
            return false;
    for (int i = 0; i < loops; ++i)
        if (PyArray_DIM(array, i) > 1 && PyArray_STRIDE(array, i) % alignment != 0)
            return false;
    return reinterpret_cast<std::uintptr_t>(PyArray_DATA(array)) % type->alignment == 0;
}

void prepareArrayTypes()
{
    py::list fields;
    for (host::Part const& part : host::partsOfTqs())
        fields.append(py::make_tuple(std::string(part.name), "<f4", py::make_tuple(4)));
    if (PyArray_DescrConverter(fields.ptr(), &s_tqs) == NPY_FAIL)
        throw py::error_already_set();
}

ArrayType const& arrayType(TypeId id)
{
    static std::vector<ArrayType> const types = [] {
        std::vector<ArrayType> all;
        for (host::ValueType const& type : host::valueTypes())
            all.push_back(typeOf(type));
        return all;
    }();
    return types[static_cast<std::size_t>(id)];
}

std::span<npy_intp const> shapeOf(PyArrayObject* array)
{
    return {PyArray_DIMS(array), static_cast<std::size_t>(PyArray_NDIM(array))};
}

npy_intp countOf(std::span<npy_intp const> shape)
{
    return std::accumulate(shape.begin(), shape.end(), npy_intp{1}, std::multiplies<>());
}

std::string shapeText(std::span<npy_intp const> shape)
{
    std::string text = "(";
    for (std::size_t i = 0; i < shape.size(); ++i)
        text += (i == 0 ? "" : ", ") + std::to_string(shape[i]);
    return text + (shape.size() == 1 ? ",)" : ")");
}

}  // namespace nodus::python
