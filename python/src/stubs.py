"""Writes the types of the kernels for editors and type checkers.

usage: stubs.py _kernels.pyi
"""
import sys

from nodusmath import _help, _nodusmath

#Arrays where a value is one already; a call with single numbers returns NumPy's scalar, otherwise.
ARRAYS = {"Bool": "np.bool_", "UInt8": "np.uint8", "Int32": "np.int32", "UInt32": "np.uint32",
          "Float": "np.float32", "Double": "np.float64", "TQS": "np.void", "String": "np.object_"}
SCALARS = {"Bool", "UInt8", "Int32", "UInt32", "Float", "Double", "String", "TQS"}


def returned(port):
    return "Any" if port["type"] in SCALARS else f"NDArray[{ARRAYS.get(port['type'], 'np.float32')}]"


def stub(one):
    parameters = [f"{_help.parameter_name(port['name'])}: ArrayLike = ..." for port in one["inputs"]]
    if one["asks_for_frame"]:
        parameters += ["*", "frames: ArrayLike = ..."]
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


described = _nodusmath.describe()
with open(sys.argv[1], "w", encoding="utf-8") as file:
    names = ", ".join(f'"{one["name"]}"' for one in described)
    print("from typing import Any, NamedTuple\n\nimport numpy as np\n"
          "from numpy.typing import ArrayLike, NDArray\n", file=file)
    print(f"__all__ = [{names}]\n", file=file)
    print(*tuples(described), sep="\n", file=file)
    print(*map(stub, described), sep="\n", file=file)
