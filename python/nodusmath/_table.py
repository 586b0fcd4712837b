"""Value types as dtypes and shapes, and tables as arrays of them."""
from __future__ import annotations

import math
from typing import Any, Mapping, NamedTuple

import numpy as np
import numpy.typing as npt

from . import _nodusmath

MOST_FAULTS = 20


class ValueType(NamedTuple):
    """How arrays have a value: elements of a dtype, in a shape that stands behind that of the array."""

    dtype: np.dtype[Any]
    shape: tuple[int, ...]
    lanes: tuple[str, ...]


#: By name: types["Float3"] is ValueType(dtype('float32'), (3,), ('x', 'y', 'z')).
types: dict[str, ValueType] = {
    name: ValueType(dtype, shape, tuple(lanes)) for name, dtype, shape, lanes in _nodusmath.types}


def tqs(t: npt.ArrayLike = (0, 0, 0, 0), q: npt.ArrayLike = (0, 0, 0, 1),
        s: npt.ArrayLike = (1, 1, 1, 1)) -> npt.NDArray[np.void]:
    """Transforms of translations, rotations and scales, each (..., 4); they broadcast."""
    parts = [np.asarray(part, dtype=np.float32) for part in (t, q, s)]
    made = np.empty(np.broadcast_shapes(*(part.shape for part in parts))[:-1], types["TQS"].dtype)
    for name, part in zip("tqs", parts):
        made[name] = part
    return made


class Table:
    """Columns by name, from a data frame, a mapping or a structured array."""

    def __init__(self, source: Any) -> None:
        names = source.dtype.names if isinstance(source, np.ndarray) else None
        if names is None and not hasattr(source, "keys"):
            raise TypeError("columns want a data frame, a mapping of names to arrays or a "
                            f"structured array, not {type(source).__name__}")
        self.names: list[str] = [str(name) for name in (source.keys() if names is None else names)]
        self._source: Mapping[str, Any] = source
        self.is_frame = hasattr(source, "columns") and hasattr(source, "index")
        self.rows = self._count_rows()

    def array(self, name: str) -> npt.NDArray[Any]:
        return np.asarray(self._source[name])

    def _count_rows(self) -> int | None:
        if self.is_frame:
            return len(self._source)
        lengths = {name: len(array) for name in self.names if (array := self.array(name)).ndim == 1}
        if len(set(lengths.values())) > 1:
            told = ", ".join(f"'{name}' has {length}" for name, length in lengths.items())
            raise ValueError(f"columns are of one length: {told}")
        return next(iter(lengths.values()), None)

    def column(self, name: str, type_name: str) -> tuple[npt.NDArray[Any], list[str]]:
        """The column in the type of a port, and what is wrong with it, a line a row.

        Reals become the nearest Float, as in tables of the command; nothing else may be lost.
        """
        array, dtype = self.array(name), types[type_name].dtype
        if array.ndim > 1:
            return array, [f"columns: column '{name}' has several numbers a row"]
        if array.dtype == dtype and array.dtype.isnative:
            return array, []
        if array.dtype == object:
            array = _numbers(array)
        if array.dtype.kind not in "biuf":
            return array, [f"columns: column '{name}' is {array.dtype}, not numbers"]
        with np.errstate(all="ignore"):
            made = array.astype(dtype)
        wrong = _is_wrong(array, made)
        faults = [f"columns: row {row}: column '{name}': {_why(array.flat[row], type_name)}"
                  for row in np.flatnonzero(wrong)[:MOST_FAULTS]]
        return made, faults


def _numbers(array: npt.NDArray[Any]) -> npt.NDArray[Any]:
    """A data frame's own kinds of numbers; what is none stays what it is."""
    try:
        return np.array(array.tolist()) if array.size else array.astype(np.float64)
    except ValueError:
        return array


def _is_wrong(array: npt.NDArray[Any], made: npt.NDArray[Any]) -> npt.NDArray[np.bool_]:
    wrong: npt.NDArray[np.bool_]
    if made.dtype == bool:
        wrong = (array != 0) & (array != 1)
    elif made.dtype.kind == "f":
        wrong = np.isinf(made) & ~np.isinf(array.astype(np.float64))
    else:
        limits = np.iinfo(made.dtype)
        wrong = ~((array >= limits.min) & (array <= limits.max) & (array == np.trunc(array)))
    return wrong


def _why(value: Any, type_name: str) -> str:
    dtype = types[type_name].dtype
    text = f"'{_text(value)}'"
    if dtype == bool:
        return f"{text} is not true, false, 1 or 0"
    if dtype.kind == "f":
        return f"{text} is beyond every {type_name}"
    if math.isfinite(value) and value != math.trunc(value):
        return f"{text} is not a whole number"
    return f"{text} is outside {type_name} ({np.iinfo(dtype).min} to {np.iinfo(dtype).max})"


def _text(value: Any) -> str:
    """The shorter of the two ways to write a number, as the command has it."""
    if value.dtype.kind != "f" or not math.isfinite(value):
        return str(value)
    return min(np.format_float_positional(value, trim="-"),
               np.format_float_scientific(value, trim="-", exp_digits=2), key=len)
