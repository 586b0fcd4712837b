"""What help(), editors and notebooks show of a kernel; finding kernels by words."""
from __future__ import annotations

import functools
import inspect
import keyword
from typing import Any

from . import _nodusmath


@functools.cache
def described() -> dict[str, dict[str, Any]]:
    return {one["name"]: one for one in _nodusmath.describe()}


def parameter_name(port: str) -> str:
    """As a call can name it: "from" is a word of Python's own."""
    return port + "_" if keyword.iskeyword(port) else port


class _Shown:
    """A default or a type that a signature shows as the catalogue writes it."""

    def __init__(self, text: str) -> None:
        self._text = text

    def __repr__(self) -> str:
        return self._text


def _signature(one: dict[str, Any]) -> inspect.Signature:
    parameters = [
        inspect.Parameter(parameter_name(port["name"]), inspect.Parameter.POSITIONAL_OR_KEYWORD,
                          default=_Shown(port["default"] or "''"), annotation=_Shown(port["type"]))
        for port in one["inputs"]]
    if one["asks_for_frame"]:
        parameters.append(inspect.Parameter("frames", inspect.Parameter.KEYWORD_ONLY,
                                            default=_Shown("0"), annotation=_Shown("Int32")))
    parameters.append(inspect.Parameter("out", inspect.Parameter.KEYWORD_ONLY, default=None))
    outputs = [port["type"] for port in one["outputs"]]
    returned = outputs[0] if len(outputs) == 1 else f"({', '.join(outputs)})"
    return inspect.Signature(parameters, return_annotation=_Shown(returned))


def _port_lines(title: str, ports: list[dict[str, Any]]) -> list[str]:
    lines = [title, "-" * len(title)]
    for port in ports:
        unit = f", in {port['unit']}" if port["unit"] else ""
        lines.append(f"{parameter_name(port['name'])} : {port['type']}{unit}")
        if port["choices"]:
            choices = ", ".join(f"{value} {name}" for value, name in port["choices"].items())
            lines.append(f"    {choices}")
    return lines


def _doc(one: dict[str, Any]) -> str:
    lines = [one["doc"], ""]
    if one["edges"]:
        lines += [one["edges"], ""]
    lines += [*_port_lines("Inputs", one["inputs"]), ""]
    if one["asks_for_frame"]:
        lines[-1:] = ["frames : Int32, the frame of each value; 0 where it is not given", ""]
    lines += [*_port_lines("Outputs", one["outputs"]),
              "out : where they go, " + ("an array" if len(one["outputs"]) == 1 else "a tuple of arrays")]
    return "\n".join(lines)


def about(name: str, what: str) -> Any:
    """The docstring, the signature or the repr of a kernel."""
    one = described()[name]
    if what == "doc":
        return _doc(one)
    if what == "signature":
        return _signature(one)
    return f"<{name}{_signature(one)}: {one['doc']}>"


class Found(list[Any]):
    """Kernels, shown one a line."""

    def __repr__(self) -> str:
        return "\n".join(map(repr, self)) or "nothing"


def find(words: str) -> Found:
    """The kernels that all words lead to, the nearest first: find("blend"), find("look at").

    A word matches the beginning of a word of the name, of a search word or of a type; from four
    letters on also any part of the name and what stands in the description.
    """
    from . import _kernels
    return Found(getattr(_kernels, name) for name in _nodusmath.find(words.split()))
