// What a call gives: in arrays that are made for it, or in those of the caller.
#pragma once

#include "arguments.h"

namespace nodus::python {

// Of one output port. Throws pybind11::error_already_set.
class Result {
public:
    // out: the caller's array, or none.
    Result(host::NodeType const& type, host::Port const& port, pybind11::object out);

    // The caller's array as the call's other operands are, or null.
    Operand const* given() const { return m_out ? &m_given : nullptr; }
    [[noreturn]] void refuseShape(Shape const& wanted) const;

    // Where the rows go, in that shape. inUse: arrays that are read or written meanwhile; has this
    // one afterwards.
    Operand& prepare(Shape const& shape, std::vector<pybind11::object>& inUse);

    // The caller's array; else an array, NumPy's scalar or a str.
    pybind11::object take();

private:
    [[noreturn]] void fail(std::string const& why, PyObject* error) const;

    host::NodeType const* m_type;
    host::Port const* m_port;
    pybind11::object m_out;
    Operand m_given, m_made;
    bool m_isDirect = false;  // into the caller's array
};

// A list of str.
pybind11::list listOf(std::vector<String> const& texts);

}  // namespace nodus::python
