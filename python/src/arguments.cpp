// Reading numbers, sequences and arrays for ports.
#include "arguments.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace nodus::python {

namespace py = pybind11;
using host::TypeId;
using host::ValueType;

namespace {

template <typename T> Read store(T value, std::byte* to)
{
    std::memcpy(to, &value, sizeof value);
    return Read::done;
}

std::string wants(ValueType const& type) { return "wants " + std::string(type.name); }

template <typename T> std::string outside(PyObject* number, ValueType const& type)
{
    return wants(type) + "; " + textOf(number) + " is outside (" +
           std::to_string(std::numeric_limits<T>::min()) + " to " +
           std::to_string(std::numeric_limits<T>::max()) + ")";
}

// A Python number rounds to the nearest Float; one beyond all of them would become another value.
Read storeReal(double value, ValueType const& type, std::byte* to, PortName name)
{
    if (type.id == TypeId::Double)
        return store(value, to);
    float const rounded = static_cast<float>(value);
    if (std::isinf(rounded) && !std::isinf(value)) {
        name.refuse(wants(type) + "; " + textOf(py::float_(value)) + " is beyond every one");
        return Read::refused;
    }
    return store(rounded, to);
}

Read readReal(PyObject* given, ValueType const& type, std::byte* to, PortName name)
{
    bool const isFloat = type.id == TypeId::Float;
    if (PyFloat_CheckExact(given) || (!isFloat && PyFloat_Check(given)))
        return storeReal(PyFloat_AS_DOUBLE(given), type, to, name);
    if (isFloat && PyArray_IsScalar(given, Float))
        return store(PyArrayScalar_VAL(given, Float), to);
    if (!PyLong_CheckExact(given))
        return Read::other;
    int overflow = 0;
    long long const whole = PyLong_AsLongLongAndOverflow(given, &overflow);
    if (overflow == 0)  // straight to the type: by way of Double it would be rounded twice
        return isFloat ? store(static_cast<float>(whole), to)
                       : store(static_cast<double>(whole), to);
    double const real = PyLong_AsDouble(given);
    if (real == -1.0 && PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        name.refuse(wants(type) + "; the number is beyond every one");
        return Read::refused;
    }
    return storeReal(real, type, to, name);
}

template <typename T>
Read readInteger(PyObject* given, ValueType const& type, std::byte* to, PortName name)
{
    if constexpr (std::is_same_v<T, npy_int32>) {
        if (PyArray_IsScalar(given, Int))
            return store(PyArrayScalar_VAL(given, Int), to);
    } else if constexpr (std::is_same_v<T, npy_uint32>) {
        if (PyArray_IsScalar(given, UInt))
            return store(PyArrayScalar_VAL(given, UInt), to);
    } else if (PyArray_IsScalar(given, UByte)) {
        return store(PyArrayScalar_VAL(given, UByte), to);
    }
    if (!PyLong_CheckExact(given))
        return Read::other;
    int overflow = 0;
    long long const whole = PyLong_AsLongLongAndOverflow(given, &overflow);
    if (overflow != 0 || whole < std::numeric_limits<T>::min() ||
        whole > std::numeric_limits<T>::max()) {
        name.refuse(outside<T>(given, type));
        return Read::refused;
    }
    return store(static_cast<T>(whole), to);
}

Read readLane(PyObject* given, ValueType const& type, std::byte* to, PortName name)
{
    switch (type.id) {
    case TypeId::Float:
    case TypeId::Double:
        return readReal(given, type, to, name);
    case TypeId::Int32:
        return readInteger<npy_int32>(given, type, to, name);
    case TypeId::UInt32:
        return readInteger<npy_uint32>(given, type, to, name);
    case TypeId::UInt8:
        return readInteger<npy_uint8>(given, type, to, name);
    case TypeId::Bool:
        if (given == Py_True || given == Py_False)
            return store(static_cast<npy_bool>(given == Py_True), to);
        if (PyArray_IsScalar(given, Bool))
            return store(PyArrayScalar_VAL(given, Bool), to);
        return Read::other;
    case TypeId::TQS:
        if (PyArray_IsScalar(given, Void)) {
            auto const* const record = reinterpret_cast<PyVoidScalarObject*>(given);
            if (arrayType(type.id).fits(record->descr)) {
                std::memcpy(to, record->obval, type.size);
                return Read::done;
            }
        }
        return Read::other;
    default:
        return Read::other;
    }
}

// One value of an array's own: no loop over rows, no references.
Read readLanes(PyArrayObject* array, ArrayType const& type, std::byte* to)
{
    if (PyArray_NDIM(array) != type.dimensions || !type.fits(PyArray_DESCR(array)) ||
        !std::equal(type.core().begin(), type.core().end(), PyArray_DIMS(array)))
        return Read::other;
    auto const* const from = static_cast<std::byte const*>(PyArray_DATA(array));
    if (type.dimensions == 0) {
        std::memcpy(to, from, type.type->size);
        return Read::done;
    }
    npy_intp const* const strides = PyArray_STRIDES(array);
    npy_intp const rows = type.dimensions == 2 ? type.shape[0] : 1;
    npy_intp const rowStride = type.dimensions == 2 ? strides[0] : 0;
    for (npy_intp row = 0; row < rows; ++row)
        for (npy_intp lane = 0; lane < type.core().back(); ++lane, to += type.type->laneSize)
            std::memcpy(to, from + row * rowStride + lane * strides[type.dimensions - 1],
                        type.type->laneSize);
    return Read::done;
}

struct Range {
    py::object least, greatest;
};

// Of an array of whole numbers that has some.
Range rangeOf(py::object const& array)
{
    auto const one = [](PyObject* found) {
        if (found == nullptr)
            throw py::error_already_set();
        return py::int_(py::reinterpret_steal<py::object>(found));
    };
    return {one(PyArray_Min(asArray(array), NPY_MAXDIMS, nullptr)),
            one(PyArray_Max(asArray(array), NPY_MAXDIMS, nullptr))};
}

// Why whole numbers cannot become that type; empty when they can.
std::string whyNotFrom(py::object const& integers, ValueType const& lane, bool isLiteral)
{
    if (PyArray_SIZE(asArray(integers)) == 0 || (isReal(lane.id) && isLiteral))
        return {};
    // By a name of its own: clang++ 14 takes no structured bindings into lambdas.
    auto const range = rangeOf(integers);
    py::object const &least = range.least, &greatest = range.greatest;
    auto const fits = [&](long long from, long long to) {
        return least >= py::int_(from) && greatest <= py::int_(to);
    };
    auto const within = [&](long long from, long long to) -> std::string {
        return fits(from, to)
                   ? ""
                   : "; the numbers from " + textOf(least) + " to " + textOf(greatest) +
                         " are beyond " + std::to_string(from) + " to " + std::to_string(to);
    };
    switch (lane.id) {
    case TypeId::Bool:
        return within(0, 1);
    case TypeId::UInt8:
        return within(0, 255);
    case TypeId::Int32:
        return within(std::numeric_limits<std::int32_t>::min(),
                      std::numeric_limits<std::int32_t>::max());
    case TypeId::UInt32:
        return within(0, std::numeric_limits<std::uint32_t>::max());
    case TypeId::Float:
        return within(-(1LL << 24), 1LL << 24);  // all of these are Floats
    default:
        return within(-(1LL << 53), 1LL << 53);
    }
}

// Numbers as Python's own objects have no type to lose.
bool isLiteral(PyObject* given)
{
    return PyFloat_CheckExact(given) || PyLong_CheckExact(given) || PyList_Check(given) ||
           PyTuple_Check(given);
}

std::string notAnArrayOf(py::object const& array)
{
    return ", not an array of " + textOf(array.attr("dtype"));
}

// An array that has what is called a double because its source had Python's numbers.
std::string whyNotFromReals(py::object const& reals, ArrayType const& type, bool isLiteral)
{
    bool const isEmpty = PyArray_SIZE(asArray(reals)) == 0;
    if ((isEmpty && isLiteral) || type.type->lane == TypeId::Double)
        return {};
    if (type.element != NPY_FLOAT32)
        return notAnArrayOf(reals);
    if (isLiteral || PyArray_ITEMSIZE(asArray(reals)) < 4)
        return {};
    return notAnArrayOf(reals) + ", which would lose digits: use .astype(numpy.float32)";
}

// Why an array of other elements cannot become one of these; empty when it can.
std::string whyNot(py::object const& array, ArrayType const& type, bool isLiteral)
{
    auto const wanted =
        py::reinterpret_steal<py::object>(reinterpret_cast<PyObject*>(type.descr()));
    bool const differsInByteOrder =
        PyArray_CanCastTypeTo(PyArray_DESCR(asArray(array)),
                              reinterpret_cast<PyArray_Descr*>(wanted.ptr()),
                              NPY_EQUIV_CASTING) != 0;
    int const from = PyArray_TYPE(asArray(array));
    if (!differsInByteOrder && type.element == NPY_VOID)
        return ", a structured array with the fields t, q and s (nodusmath.tqs makes one)";
    if (differsInByteOrder || PyTypeNum_ISBOOL(from))
        return {};
    if (PyTypeNum_ISINTEGER(from))
        return whyNotFrom(array, host::valueType(type.type->lane), isLiteral);
    if (PyTypeNum_ISFLOAT(from) && from != NPY_LONGDOUBLE)
        return whyNotFromReals(array, type, isLiteral);
    return notAnArrayOf(array);
}

py::object converted(py::object array, ArrayType const& type, PortName name, bool isLiteral)
{
    if (type.fits(PyArray_DESCR(asArray(array))))
        return array;
    if (std::string const why = whyNot(array, type, isLiteral); !why.empty())
        name.fail(wants(*type.type) + why);
    // NumPy would warn of what is a fault here.
    py::object const errors =
        py::module_::import("numpy").attr("errstate")(py::arg("over") = "ignore");
    errors.attr("__enter__")();
    PyObject* const cast = PyArray_CastToType(asArray(array), type.descr(), 0);
    errors.attr("__exit__")(py::none(), py::none(), py::none());
    if (cast == nullptr)
        throw py::error_already_set();
    auto made = py::reinterpret_steal<py::object>(cast);
    if (PyArray_TYPE(asArray(array)) == NPY_FLOAT64 && type.element == NPY_FLOAT32) {
        auto const* const after = static_cast<float const*>(PyArray_DATA(asArray(made)));
        auto const flat =
            py::reinterpret_steal<py::object>(PyArray_Ravel(asArray(array), NPY_CORDER));
        auto const* const before = static_cast<double const*>(PyArray_DATA(asArray(flat)));
        for (npy_intp i = 0; i < PyArray_SIZE(asArray(made)); ++i)
            if (std::isinf(after[i]) && !std::isinf(before[i]))
                name.fail(wants(*type.type) + "; " + textOf(py::float_(before[i])) +
                          " is beyond every Float");
    }
    return made;
}

Operand readTexts(py::object const& array, PortName name)
{
    Operand operand;
    PyArrayObject* const texts = asArray(array);
    auto const size = static_cast<std::size_t>(PyArray_SIZE(texts));
    operand.texts.reserve(size);
    for (py::handle const each : py::object(array.attr("ravel")()).attr("tolist")()) {
        if (!PyUnicode_Check(each.ptr()))
            name.fail("wants String, a str, not " + textOf(py::repr(each)));
        auto const text = py::cast<std::string_view>(each);
        operand.texts.emplace_back(std::string(text.data(), text.size()));
    }
    operand.laySideBySide(shapeOf(texts), sizeof(String));
    operand.first = reinterpret_cast<std::byte*>(operand.texts.data());
    return operand;
}

}  // namespace

void PortName::refuse(std::string const& why, PyObject* error) const
{
    PyErr_SetString(error,
                    (std::string(kernel) + ": port '" + std::string(port) + "' " + why).c_str());
}

void PortName::fail(std::string const& why, PyObject* error) const
{
    refuse(why, error);
    throw py::error_already_set();
}

std::string textOf(py::handle object) { return py::cast<std::string>(py::str(object)); }

void Operand::laySideBySide(std::span<npy_intp const> extents, npy_intp size)
{
    shape.assign(extents.begin(), extents.end());
    strides.resize(shape.size());
    for (std::size_t i = shape.size(); i-- > 0; size *= shape[i])
        strides[i] = size;
}

Operand Operand::in(py::object array, ArrayType const& type)
{
    PyArrayObject* const values = asArray(array);
    auto const loops = shapeOf(values).size() - type.core().size();
    Operand operand;
    operand.first = static_cast<std::byte*>(PyArray_DATA(values));
    operand.shape.assign(PyArray_DIMS(values), PyArray_DIMS(values) + loops);
    operand.strides.assign(PyArray_STRIDES(values), PyArray_STRIDES(values) + loops);
    operand.array = std::move(array);
    return operand;
}

Read readValue(PyObject* given, ValueType const& type, std::byte* to, PortName name)
{
    ArrayType const& wanted = arrayType(type.id);
    if (PyArray_CheckExact(given))
        return readLanes(asArray(given), wanted, to);
    if (wanted.dimensions == 0)
        return readLane(given, type, to, name);
    bool const isList = PyList_CheckExact(given);
    if (wanted.dimensions != 1 || (!isList && !PyTuple_CheckExact(given)) ||
        Py_SIZE(given) != wanted.shape[0])
        return Read::other;
    ValueType const& lane = host::valueType(type.lane);
    for (Py_ssize_t i = 0; i < Py_SIZE(given); ++i, to += type.laneSize) {
        PyObject* const item = isList ? PyList_GET_ITEM(given, i) : PyTuple_GET_ITEM(given, i);
        if (Read const read = readLane(item, lane, to, name); read != Read::done)
            return read;
    }
    return Read::done;
}

Operand readArray(PyObject* given, ValueType const& type, PortName name)
{
    ArrayType const& wanted = arrayType(type.id);
    auto array = py::reinterpret_steal<py::object>(
        PyArray_FromAny(given, nullptr, 0, 0, NPY_ARRAY_ENSUREARRAY, nullptr));
    if (!array) {
        if (PyErr_ExceptionMatches(PyExc_ValueError) == 0)
            throw py::error_already_set();
        PyErr_Clear();
        name.fail(wants(type) + ": what is given has no shape");
    }
    if (wanted.element == NPY_OBJECT)
        return readTexts(array, name);
    array = converted(array, wanted, name, isLiteral(given));
    if (!wanted.isCoreOf(asArray(array)))
        name.fail(wants(type) + ", an array of shape " + wanted.shapeText() + ", not " +
                      shapeText(shapeOf(asArray(array))),
                  PyExc_ValueError);
    if (!wanted.liesWell(asArray(array))) {
        array = py::reinterpret_steal<py::object>(PyArray_NewCopy(asArray(array), NPY_CORDER));
        if (!array)
            throw py::error_already_set();
    }
    return Operand::in(std::move(array), wanted);
}

}  // namespace nodus::python
