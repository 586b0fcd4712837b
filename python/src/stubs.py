"""Writes the types of the kernels for editors and type checkers.

usage: stubs.py _kernels.pyi
"""
import sys

from nodusmath import _help, types


def returned(port):
    """An array where a value is one already; else a call with single values returns NumPy's scalar."""
    dtype, shape, _ = types[port["type"]]
    return f"NDArray[np.{dtype}]" if shape else "Any"


def stub(one):
    parameters = [f"{_help.parameter_name(port['name'])}: ArrayLike = ..." for port in one["inputs"]]
    parameters.append("*")
    if one["asks_for_frame"]:
        parameters.append("frames: ArrayLike = ...")
    parameters.append("out: " + ("_Out" if len(one["outputs"]) == 1 else "_Outs") + " = ...")
    outputs = one["outputs"]
    result = returned(outputs[0]) if len(outputs) == 1 else one["family"] + "Results"
    lines = [f"def {one['name']}({', '.join(parameters)}) -> {result}:"]
    lines += [f'    """{_help.about(one["name"], "doc")}"""'.replace("\n", "\n    "), ""]
    return "\n".join(line.rstrip() for line in "\n".join(lines).split("\n"))


def tuples(described):
    families = {one["family"]: one["outputs"] for one in described if len(one["outputs"]) > 1}
    for family, outputs in families.items():
        yield f"class {family}Results(NamedTuple):"
        yield from (f"    {port['name']}: Any" for port in outputs)
        yield ""


described = _help.described().values()
with open(sys.argv[1], "w", encoding="utf-8") as file:
    names = ", ".join(f'"{one["name"]}"' for one in described)
    print("from typing import Any, NamedTuple\n\nimport numpy as np\n"
          "from numpy.typing import ArrayLike, NDArray\n\n"
          "_Outs = tuple[NDArray[Any] | None, ...] | None\n"
          "_Out = NDArray[Any] | _Outs\n", file=file)
    print(f"__all__ = [{names}]\n", file=file)
    print(*tuples(described), sep="\n", file=file)
    print(*map(stub, described), sep="\n", file=file)
