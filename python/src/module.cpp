// The extension: loads NumPy's functions and the module of kernels, and offers both to the package.
#define NODUSMATH_LOADS_NUMPY
#include "array_types.h"
#include "calls.h"
#include "kernel.h"
#include "program.h"
#include "threads.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/literals.h"
#include "nodus/host/module.h"
#include "nodus/host/search.h"
#include "nodus/runtime/KernelTable.h"

#include <pybind11/stl.h>

#include <dlfcn.h>

#include <filesystem>
#include <memory>
#include <mutex>

namespace nodus::python {

namespace py = pybind11;

namespace {

namespace fs = std::filesystem;

PyObject* s_graphError = nullptr;

// The build tree has the module beside the runtime library, an installation among the modules.
std::string modulePath()
{
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void const*>(&runtime::findKernel), &info) == 0)
        throw host::Fault("the runtime library is nowhere to be found");
    fs::path const folder = fs::canonical(info.dli_fname).parent_path();
    std::string tried;
    for (char const* const place : {"libnodusmath.so", "nodus/modules/libnodusmath.so"}) {
        fs::path const path = folder / place;
        if (fs::exists(path))
            return path.string();
        tried += (tried.empty() ? "" : " nor ") + path.string();
    }
    throw host::Fault("no module: neither " + tried + " is there");
}

// Loaded at the first import, and never unloaded: objects of Python refer to it.
struct Environment {
    host::Module module{modulePath()};
    host::Catalogue catalogue{std::vector<host::Module const*>{&module}};
};

Environment& environment()
{
    static auto* const one = new Environment;
    return *one;
}

py::list portsOf(std::vector<host::Port> const& ports)
{
    py::list described;
    for (host::Port const& port : ports) {
        py::dict choices;
        for (host::Choice const& choice : port.choices)
            choices[py::int_(choice.value)] = choice.name;
        py::dict one;
        one["name"] = port.name;
        one["type"] = port.type->name;
        one["unit"] = port.unit;
        one["default"] =
            host::valueText(*port.type, port.standard.bytes.data(), port.standard.text);
        one["choices"] = choices;
        described.append(one);
    }
    return described;
}

py::dict describe(host::NodeType const& type)
{
    py::dict described;
    described["name"] = type.name;
    described["family"] = type.family->name;
    described["group"] = type.family->group;
    described["doc"] = type.family->doc;
    described["edges"] = type.family->edges;
    described["inputs"] = portsOf(type.inputs);
    described["outputs"] = portsOf(type.outputs);
    described["asks_for_frame"] = type.module->rowsOf(kernelName(type)).needsFrames;
    return described;
}

// (name, dtype, shape of a value, names of its lanes) of each value type.
py::list describeTypes()
{
    py::list types;
    for (host::ValueType const& type : host::valueTypes()) {
        ArrayType const& array = arrayType(type.id);
        py::tuple shape(array.core().size());
        for (std::size_t i = 0; i < array.core().size(); ++i)
            shape[i] = array.core()[i];
        py::list lanes;
        for (std::string_view const lane : type.laneNames)
            lanes.append(lane);
        types.append(py::make_tuple(
            type.name,
            py::reinterpret_steal<py::object>(reinterpret_cast<PyObject*>(array.descr())), shape,
            lanes));
    }
    return types;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): as pybind11 calls it
void translate(std::exception_ptr failure)
{
    try {
        if (failure)
            std::rethrow_exception(failure);
    } catch (host::Fault const& fault) {
        py::list lines;
        for (std::string const& line : fault.lines())
            lines.append(py::str(line.data(), line.size()));
        if (s_graphError != nullptr)
            PyErr_SetObject(s_graphError, lines.ptr());
        else
            PyErr_SetString(PyExc_ImportError, fault.what());
    }
}

void fill(py::module_& module)
{
    if (_import_array() < 0)
        throw py::error_already_set();
    prepareArrayTypes();
    py::register_exception_translator(translate);
    Environment& loaded = environment();

    module.def("is_main_interpreter",
               [] { return PyInterpreterState_Get() == PyInterpreterState_Main(); });
    module.def("set_up", [](py::object graphError, py::object isLogWanted, py::object takeLog) {
        s_graphError = graphError.release().ptr();
        setLog(std::move(isLogWanted), std::move(takeLog));
    });
    module.attr("Kernel") = prepareKernels();
    module.def("kernel", [&loaded](std::string const& name, py::object results, py::object help) {
        return makeKernel(*loaded.catalogue.find(name), std::move(results), std::move(help));
    });
    module.def("describe", [&loaded] {
        py::list all;
        for (host::NodeType const& type : loaded.catalogue.nodeTypes())
            all.append(describe(type));
        return all;
    });
    module.def("find", [&loaded](std::vector<std::string> const& words) {
        py::list found;
        for (host::Family const* const family : host::findFamilies(loaded.catalogue, words))
            for (host::NodeType const* const type : family->nodeTypes)
                found.append(type->name);
        return found;
    });
    module.def("set_threads", setThreads);
    module.attr("types") = describeTypes();
    module.attr("catalogue_path") = loaded.module.cataloguePath();
    addProgram(module, loaded.catalogue);
}

}  // namespace

}  // namespace nodus::python

// As PYBIND11_MODULE writes it, behind a question: what that does first would wait forever for a
// lock that a sub-interpreter holds.
extern "C" PYBIND11_EXPORT PyObject* PyInit__nodusmath()
{
    if (PyInterpreterState_Get() != PyInterpreterState_Main()) {
        PyErr_SetString(PyExc_ImportError,
                        "nodusmath works in the main interpreter alone, not in a sub-interpreter");
        return nullptr;
    }
    PYBIND11_CHECK_PYTHON_VERSION
    PYBIND11_ENSURE_INTERNALS_READY
    static pybind11::module_::module_def definition;
    auto module = pybind11::module_::create_extension_module("_nodusmath", nullptr, &definition);
    try {
        nodus::python::fill(module);
        return module.ptr();
    }
    PYBIND11_CATCH_INIT_EXCEPTIONS
}
