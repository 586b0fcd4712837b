// The type of kernels: arguments by position and by name, single values without a detour.
#include "kernel.h"

#include "calls.h"

#include "modules/load.h"
#include "nodus/host/diagnostics.h"
#include "nodus/runtime/EvaluationScope.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace nodus::python {

namespace py = pybind11;
using host::TypeId;

namespace {

constexpr std::size_t kMostBytes = 512;

// What an object of the type refers to; never freed.
struct Description {
    host::NodeType const* type;
    runtime::RowsOfKernel rows;
    py::object name, results, help;
    std::vector<PyObject*> inputs;  // interned names
    std::array<std::byte, kMostBytes> standard;
    bool hasTexts;
};

struct Kernel {
    PyObject_HEAD vectorcallfunc call;
    Description const* about;
};

PyObject *s_frames = nullptr, *s_out = nullptr;
PyTypeObject s_type{};

Description const& aboutOf(PyObject* self) { return *reinterpret_cast<Kernel*>(self)->about; }

PortName nameOf(Description const& about, std::size_t port)
{
    return {about.type->name, about.type->inputs[port].name};
}

std::string portList(Description const& about)
{
    std::vector<std::string_view> names;
    for (host::Port const& port : about.type->inputs)
        names.push_back(port.name);
    if (about.rows.needsFrames)
        names.emplace_back("frames");
    return host::alternatives(names, "and", 99);
}

// What a call gives: one for each input, null where the standard holds; the frames, and where
// results go.
struct Given {
    std::array<PyObject*, kMostOperands> inputs{};
    PyObject *frames = nullptr, *out = nullptr;
};

PyObject** placeOf(Description const& about, PyObject* keyword, Given& given)
{
    for (std::size_t i = 0; i < about.inputs.size(); ++i)
        if (about.inputs[i] == keyword)
            return &given.inputs[i];
    if (about.rows.needsFrames && PyUnicode_Compare(keyword, s_frames) == 0)
        return &given.frames;
    if (PyUnicode_Compare(keyword, s_out) == 0)
        return &given.out;
    // Names that a program has put together are not interned; "from_" is how Python can write
    // "from".
    std::string_view wanted = py::cast<std::string_view>(py::handle(keyword));
    for (int attempt = 0; attempt < 2; ++attempt) {
        for (std::size_t i = 0; i < about.inputs.size(); ++i)
            if (about.type->inputs[i].name == wanted)
                return &given.inputs[i];
        if (!wanted.ends_with('_'))
            break;
        wanted.remove_suffix(1);
    }
    return nullptr;
}

bool sortArguments(Description const& about, PyObject* const* arguments, std::size_t count,
                   PyObject* keywords, Given& given)
{
    auto const refuse = [&](std::string const& why) {
        PyErr_SetString(PyExc_TypeError, (about.type->name + why).c_str());
        return false;
    };
    if (count > about.inputs.size())
        return refuse(" has " + std::to_string(about.inputs.size()) + " inputs, not " +
                      std::to_string(count) + ": " + portList(about));
    std::copy_n(arguments, count, given.inputs.begin());
    Py_ssize_t const named = keywords != nullptr ? PyTuple_GET_SIZE(keywords) : 0;
    for (Py_ssize_t i = 0; i < named; ++i) {
        PyObject* const keyword = PyTuple_GET_ITEM(keywords, i);
        PyObject** const place = placeOf(about, keyword, given);
        std::string const name = py::cast<std::string>(py::handle(keyword));
        if (place == nullptr)
            return refuse(" has no input '" + name + "'; it has " + portList(about));
        if (*place != nullptr)
            return refuse(" is given '" + name + "' twice");
        *place = arguments[count + static_cast<std::size_t>(i)];
    }
    return true;
}

// A port's value as NumPy's scalar, or as an array of its lanes.
PyObject* valueOf(host::ValueType const& type, std::byte const* bytes)
{
#define NODUS_SCALAR(Name, T)                                                                      \
    {                                                                                              \
        PyObject* const made = PyArrayScalar_New(Name);                                            \
        if (made != nullptr)                                                                       \
            PyArrayScalar_ASSIGN(made, Name, host::load<T>(bytes));                                \
        return made;                                                                               \
    }
    switch (type.id) {
    case TypeId::Bool:
        PyArrayScalar_RETURN_BOOL_FROM_LONG(host::load<npy_bool>(bytes));
    case TypeId::UInt8:
        NODUS_SCALAR(UByte, npy_uint8)
    case TypeId::Int32:
        NODUS_SCALAR(Int, npy_int32)
    case TypeId::UInt32:
        NODUS_SCALAR(UInt, npy_uint32)
    case TypeId::Float:
        NODUS_SCALAR(Float, npy_float32)
    case TypeId::Double:
        NODUS_SCALAR(Double, npy_float64)
    default:
        break;
    }
#undef NODUS_SCALAR
    ArrayType const& shape = arrayType(type.id);
    PyObject* const array = PyArray_Empty(shape.dimensions, shape.shape.data(), shape.descr(), 0);
    if (array == nullptr)
        return nullptr;
    std::memcpy(PyArray_DATA(asArray(array)), bytes, type.size);
    return PyArray_Return(asArray(array));
}

// The results of several outputs are a named tuple.
PyObject* tupleOf(Description const& about, py::tuple const& values)
{
    return PyTuple_Type.tp_new(reinterpret_cast<PyTypeObject*>(about.results.ptr()),
                               py::make_tuple(values).ptr(), nullptr);
}

PyObject* callOnce(Description const& about, std::byte const* in)
{
    host::NodeType const& type = *about.type;
    alignas(16) std::array<std::byte, kMostBytes> out, workspace;
    std::memset(out.data(), 0, type.outputExtent);
    if (type.solve != nullptr) {
        type.solve(in, out.data());
    } else {
        runtime::EvaluationScope const scope(0, nullptr);
        type.init(in, workspace.data());
        type.solveWithWorkspace(in, workspace.data(), out.data());
    }
    if (type.outputs.size() == 1)
        return valueOf(*type.outputs[0].type, out.data());
    py::tuple values(type.outputs.size());
    for (std::size_t i = 0; i < type.outputs.size(); ++i) {
        host::Port const& port = type.outputs[i];
        PyObject* const value = valueOf(*port.type, out.data() + port.offset);
        if (value == nullptr)
            return nullptr;
        PyTuple_SET_ITEM(values.ptr(), static_cast<Py_ssize_t>(i), value);
    }
    return tupleOf(about, values);
}

Operand standardOf(host::Port const& port)
{
    Operand operand;
    if (port.type->id == TypeId::String) {
        operand.texts.emplace_back(
            std::string(port.standard.text.data(), port.standard.text.size()));
        operand.first = reinterpret_cast<std::byte*>(operand.texts.data());
    } else {
        operand.first =
            const_cast<std::byte*>(static_cast<std::byte const*>(port.standard.bytes.data()));
    }
    return operand;
}

// The caller's arrays, none where it leaves one to be made.
std::vector<py::object> outOf(Description const& about, PyObject* out)
{
    auto const& ports = about.type->outputs;
    std::vector<py::object> arrays(ports.size());
    bool const isTuple = out != nullptr && PyTuple_Check(out);
    if (out == nullptr || out == Py_None)
        return arrays;
    if (ports.size() == 1 && !isTuple) {
        arrays[0] = py::reinterpret_borrow<py::object>(out);
        return arrays;
    }
    if (!isTuple || PyTuple_GET_SIZE(out) != std::ssize(ports)) {
        std::vector<std::string_view> names;
        for (host::Port const& port : ports)
            names.push_back(port.name);
        PyErr_SetString(PyExc_TypeError,
                        (about.type->name + ": out wants a tuple with an array for each of " +
                         host::alternatives(names, "and", 99))
                            .c_str());
        throw py::error_already_set();
    }
    for (std::size_t i = 0; i < ports.size(); ++i)
        if (PyObject* const array = PyTuple_GET_ITEM(out, static_cast<Py_ssize_t>(i));
            array != Py_None)
            arrays[i] = py::reinterpret_borrow<py::object>(array);
    return arrays;
}

PyObject* callArrays(Description const& about, Given const& given)
{
    std::vector<Operand> inputs;
    for (std::size_t i = 0; i < about.inputs.size(); ++i) {
        host::Port const& port = about.type->inputs[i];
        inputs.push_back(given.inputs[i] == nullptr
                             ? standardOf(port)
                             : readArray(given.inputs[i], *port.type, nameOf(about, i)));
    }
    static std::int32_t const first = 0;
    Operand frames;
    frames.first = reinterpret_cast<std::byte*>(const_cast<std::int32_t*>(&first));
    if (given.frames != nullptr)
        frames =
            readArray(given.frames, host::valueType(TypeId::Int32), {about.type->name, "frames"});
    Results results = callRows(*about.type, about.rows, inputs,
                               about.rows.needsFrames ? &frames : nullptr, outOf(about, given.out));
    if (results.size() == 1)
        return results[0].release().ptr();
    py::tuple values(results.size());
    for (std::size_t i = 0; i < results.size(); ++i)
        values[i] = std::move(results[i]);
    return tupleOf(about, values);
}

PyObject* call(PyObject* self, PyObject* const* arguments, std::size_t flags, PyObject* keywords)
try {
    Description const& about = aboutOf(self);
    Given given;
    if (!sortArguments(about, arguments, static_cast<std::size_t>(PyVectorcall_NARGS(flags)),
                       keywords, given))
        return nullptr;
    alignas(16) std::array<std::byte, kMostBytes> block;
    Read read = about.hasTexts || given.frames != nullptr || given.out != nullptr ? Read::other
                                                                                  : Read::done;
    std::memcpy(block.data(), about.standard.data(), about.type->inputExtent);
    for (std::size_t i = 0; i < about.inputs.size() && read == Read::done; ++i)
        if (given.inputs[i] != nullptr) {
            host::Port const& port = about.type->inputs[i];
            read = readValue(given.inputs[i], *port.type, block.data() + port.offset,
                             nameOf(about, i));
        }
    switch (read) {
    case Read::done:
        return callOnce(about, block.data());
    case Read::other:
        return callArrays(about, given);
    default:
        return nullptr;
    }
} catch (py::error_already_set& error) {
    error.restore();
    return nullptr;
} catch (std::bad_alloc const&) {
    return PyErr_NoMemory();
}

PyObject* helpOn(PyObject* self, void* what)
{
    Description const& about = aboutOf(self);
    return PyObject_CallFunction(about.help.ptr(), "Os", about.name.ptr(),
                                 static_cast<char const*>(what));
}

PyObject* nameOfKernel(PyObject* self, void*) { return Py_NewRef(aboutOf(self).name.ptr()); }

PyObject* moduleOfKernel(PyObject*, void*) { return PyUnicode_InternFromString("nodusmath"); }

PyObject* textOfKernel(PyObject* self) { return helpOn(self, const_cast<char*>("repr")); }

PyObject* reduce(PyObject* self, PyObject*) { return nameOfKernel(self, nullptr); }

// With it pydoc takes a kernel for the function that it is.
PyObject* bind(PyObject* self, PyObject*, PyObject*) { return Py_NewRef(self); }

void destroy(PyObject* self) { Py_TYPE(self)->tp_free(self); }

PyGetSetDef s_attributes[] = {
    {"__name__", nameOfKernel, nullptr, nullptr, nullptr},
    {"__qualname__", nameOfKernel, nullptr, nullptr, nullptr},
    {"__module__", moduleOfKernel, nullptr, nullptr, nullptr},
    {"__doc__", helpOn, nullptr, nullptr, const_cast<char*>("doc")},
    {"__signature__", helpOn, nullptr, nullptr, const_cast<char*>("signature")},
    {nullptr, nullptr, nullptr, nullptr, nullptr}};
PyMethodDef s_methods[] = {{"__reduce__", reduce, METH_NOARGS, nullptr},
                           {nullptr, nullptr, 0, nullptr}};

}  // namespace

py::object prepareKernels()
{
    Py_SET_REFCNT(&s_type, 1);
    s_type.tp_name = "nodusmath.Kernel";
    s_type.tp_basicsize = sizeof(Kernel);
    s_type.tp_flags =
        Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_VECTORCALL | Py_TPFLAGS_DISALLOW_INSTANTIATION;
    s_type.tp_vectorcall_offset = offsetof(Kernel, call);
    s_type.tp_call = PyVectorcall_Call;
    s_type.tp_dealloc = destroy;
    s_type.tp_descr_get = bind;
    s_type.tp_repr = textOfKernel;
    s_type.tp_getset = s_attributes;
    s_type.tp_methods = s_methods;
    s_frames = PyUnicode_InternFromString("frames");
    s_out = PyUnicode_InternFromString("out");
    if (s_frames == nullptr || s_out == nullptr || PyType_Ready(&s_type) != 0)
        throw py::error_already_set();
    return py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(&s_type));
}

py::object makeKernel(host::NodeType const& type, py::object results, py::object help)
{
    if (type.inputs.size() + type.outputs.size() >= kMostOperands ||
        type.inputExtent > kMostBytes || type.outputExtent > kMostBytes ||
        type.workspaceExtent > kMostBytes)
        throw host::Fault(type.name + " has larger blocks than the package can hold");
    auto const rows = type.module->rowsOf(kernelName(type));
    if (rows.solve == nullptr)
        throw host::Fault(type.name + " has no function over rows beside its module");
    auto* const about = new Description{
        &type, rows, py::str(type.name), std::move(results), std::move(help), {}, {}, false};
    for (host::Port const& port : type.inputs) {
        about->inputs.push_back(PyUnicode_InternFromString(port.name.c_str()));
        std::memcpy(about->standard.data() + port.offset, port.standard.bytes.data(),
                    port.type->size);
        about->hasTexts = about->hasTexts || port.type->id == TypeId::String;
    }
    auto* const kernel = reinterpret_cast<Kernel*>(s_type.tp_alloc(&s_type, 0));
    if (kernel == nullptr)
        throw py::error_already_set();
    kernel->call = call;
    kernel->about = about;
    return py::reinterpret_steal<py::object>(reinterpret_cast<PyObject*>(kernel));
}

}  // namespace nodus::python
