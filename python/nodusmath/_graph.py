"""Graphs: read from a file or a dict or built up here, evaluated over frames, tables and images."""
from __future__ import annotations

import json
import logging
import os
import re
import subprocess
from typing import Any, Callable, Iterable, Mapping

import numpy as np
import numpy.typing as npt

from . import _nodusmath
from ._table import MOST_FAULTS, Table, types

#: Where logging nodes are heard, a record a message, with the frame as record.frame. Level INFO.
logger = logging.getLogger("nodusmath")

Progress = Callable[[int, int], object]


def set_threads(threads: int | None = None) -> None:
    """How many threads compute, graphs and kernels over many rows: as many as there are cores."""
    if threads is not None and threads < 1:
        raise ValueError(f"threads are at least one, not {threads}")
    _nodusmath.set_threads(threads or len(os.sched_getaffinity(0)))


set_threads()


class GraphError(ValueError):
    """All faults of a graph or of its table, in the words of the command nodus."""

    def __init__(self, lines: Iterable[str]) -> None:
        self.lines = tuple(lines)
        super().__init__(self.lines)

    def __str__(self) -> str:
        return "\n".join(self.lines)

    def __reduce__(self) -> tuple[type[GraphError], tuple[tuple[str, ...]]]:
        return GraphError, (self.lines,)


def _is_log_wanted() -> bool:
    return logger.isEnabledFor(logging.INFO)


_MESSAGE = re.compile(r"frame (-?\d+): (.*?)\n(?=frame -?\d+: |\Z)", re.DOTALL)


def _take_log(lines: str) -> None:
    for match in _MESSAGE.finditer(lines):
        number = int(match[1])
        logger.info("frame %d: %s", number, match[2], extra={"frame": number})


_nodusmath.set_up(GraphError, _is_log_wanted, _take_log)


class Source:
    """Where an input takes its value from: {"from": "spin.result"}."""

    def __init__(self, json_form: dict[str, object]) -> None:
        self.json_form = json_form

    def __repr__(self) -> str:
        return json.dumps(self.json_form)


class Path(Source):
    """A node, a port of it, a lane or a part: spin, spin.result, spin.result.x."""

    def __init__(self, text: str) -> None:
        super().__init__({"from": text})
        self.text = text

    def __getattr__(self, name: str) -> Path:
        if name.startswith("_"):
            raise AttributeError(name)
        return self[name]

    def __getitem__(self, name: str) -> Path:
        return Path(f"{self.text}.{name}")


def column(name: str) -> Source:
    """The column of the table that a graph is evaluated over."""
    return Source({"column": name})


frame = Source({"frame": True})


class pixel:  # as nodusmath.pixel.x
    """The centre of the pixel that an image is evaluated for."""

    x = Source({"pixel": "x"})
    y = Source({"pixel": "y"})


def _json_form(value: Any) -> Any:
    """A value as graph files have it."""
    if isinstance(value, Source):
        return value.json_form
    if isinstance(value, Mapping):
        return {str(key): _json_form(item) for key, item in value.items()}
    if isinstance(value, np.void) and value.dtype.names:
        return {name: _json_form(value[name]) for name in value.dtype.names}
    if isinstance(value, np.ndarray):
        return _json_form(value.ravel().tolist() if value.dtype.names is None else value[()])
    if isinstance(value, (list, tuple)):
        return [_json_form(item) for item in value]
    if isinstance(value, np.generic):
        value = value.item()
    if isinstance(value, float) and not np.isfinite(value):
        return str(value)
    return value


class Results(dict[str, npt.NDArray[Any]]):
    """Arrays by the names of outputs; "hand" will do for "hand.result" where a node lists one."""

    def __missing__(self, key: str) -> npt.NDArray[Any]:
        fitting = [name for name in self if name.startswith(f"{key}.")]
        if len(fitting) != 1:
            raise KeyError(key)
        return self[fitting[0]]


def _report(progress: Progress | bool | None, total: int) -> Callable[[int], object] | None:
    if progress is None or progress is False:
        return None
    if progress is not True:
        tell = progress
        return lambda done: tell(done, total)
    try:
        from tqdm.auto import tqdm
    except ImportError:
        return None
    bar = tqdm(total=total, unit="row")

    def show(done: int) -> None:
        bar.update(done - bar.n)
        if done == total:
            bar.close()

    return show


class Graph:
    """A graph of nodes.

    source: the path of a graph file, a dict of the same form, or nothing, for add and output to
    fill. A graph may be pickled, and evaluated by any number of threads at a time.
    """

    def __init__(self, source: str | os.PathLike[str] | Mapping[str, Any] | None = None) -> None:
        self._program: _nodusmath.Program | None = None
        self._form: dict[str, Any] | None = None
        self._text = b""
        self.name = "graph"
        if isinstance(source, (str, os.PathLike)):
            self.name = os.fspath(source)
            with open(source, "rb") as file:
                self._text = file.read()
            self._compiled()
        elif source is None:
            self._form = {"nodes": {}, "outputs": []}
        else:
            self._form = _json_form(source)
            self._compiled()

    def add(self, type: str, /, name: str | None = None, **inputs: Any) -> Path:
        """Adds a node; its inputs are values, other nodes or their ports, frame, column, pixel.

        Returns the node, for the inputs of others: spin.result, spin.result.x.
        """
        form = self._editable()
        nodes = form.setdefault("nodes", {})
        if name is None:
            family = type.split("_")[0]
            name = family[:1].lower() + family[1:] + str(len(nodes) + 1)
        if name in nodes:
            raise ValueError(f"there is a node '{name}' already")
        given = {key.removesuffix("_"): _json_form(value) for key, value in inputs.items()}
        nodes[name] = {"type": type, "inputs": given}
        return Path(name)

    def output(self, *nodes: Path | str) -> None:
        """Lists nodes, ports or lanes as results."""
        listed = self._editable().setdefault("outputs", [])
        listed.extend(node.text if isinstance(node, Path) else node for node in nodes)

    def _editable(self) -> dict[str, Any]:
        if self._form is None:
            self._form = json.loads(self._text)
        self._program = None
        return self._form

    def to_json(self) -> str:
        """The text of a graph file."""
        return self._source().decode()

    def _source(self) -> bytes:
        if self._form is None:
            return self._text
        return json.dumps(self._form, indent=1, ensure_ascii=False, allow_nan=False).encode()

    def _compiled(self) -> _nodusmath.Program:
        if self._program is None:
            self._program = _nodusmath.Program(self._source(), self.name)
        return self._program

    @property
    def columns(self) -> list[str]:
        """The columns that the graph reads."""
        return list(dict.fromkeys(name for name, _ in self._compiled().columns))

    @property
    def outputs(self) -> dict[str, str]:
        """The types of the results, by name."""
        return dict(self._compiled().outputs)

    def evaluate(self, frames: npt.ArrayLike | None = None, columns: Any = None, *,
                 first_frame: int | None = None, threads: int | None = None,
                 progress: Progress | bool | None = None) -> Any:
        """Evaluates the graph once a frame.

        frames: whole numbers; without them a frame for each row of the columns, or frame 0.
        columns: a data frame, a mapping of names to arrays or a structured array. Frame N reads
        row N, counted from 0. With first_frame row N is frame first_frame + N instead: for a part
        of a longer table. Reals become the nearest Float.
        threads: those of set_threads, unless told; no result depends on it.
        progress: a function of the rows that are done and of all, or True for tqdm's bar.

        Returns arrays by the names of outputs, with an axis for the frames; for a data frame a
        data frame with a column for each lane. GraphError holds all faults.
        """
        program = self._compiled()
        table = None if columns is None else Table(columns)
        self._check(program, table)
        if frames is None:
            count = 1 if table is None or table.rows is None else table.rows
            rows: Any = slice(None)
            numbers: Any = _first_frame(first_frame or 0, count)
        elif first_frame is not None:
            raise ValueError("first_frame is for evaluations without frames")
        else:
            numbers = _int32(np.asarray(frames))
            rows = _rows_of(table, frames, numbers)
            count = 1 if numbers.ndim == 0 else len(numbers)
        given = _columns_of(program, table, rows)
        results, texts = _empty_results(program, count)
        made = program.evaluate(count, given, results, numbers, threads or 0, 0,
                                _report(progress, count))
        for place, text in zip(texts, made):
            results[place] = np.array(text, dtype=object)
        named = Results(zip((name for name, _ in program.outputs), results))
        if table is not None and table.is_frame:
            return _data_frame(program, named, columns, rows)
        if frames is not None and numbers.ndim == 0:
            return Results((name, array[0]) for name, array in named.items())
        return named

    def image(self, width: int, height: int, frame: int = 0, *, threads: int | None = None,
              progress: Progress | bool | None = None) -> npt.NDArray[np.float32]:
        """Evaluates the graph once a pixel; row 0 is at the top.

        Returns the graph's one output: (height, width) for a Float, (height, width, 4) for a Color
        or a Float4.
        """
        program = self._compiled()
        _nodusmath.check(self._source(), self.name, None, True)
        if width < 1 or height < 1:
            raise ValueError(f"an image has at least one pixel, not {width} x {height}")
        results, _ = _empty_results(program, width * height)
        program.evaluate(width * height, [], results, np.array(frame, dtype=np.int32),
                         threads or 0, width, _report(progress, width * height))
        picture: npt.NDArray[np.float32] = results[0]
        return picture.reshape((height, width) + picture.shape[1:])

    def _check(self, program: _nodusmath.Program, table: Table | None) -> None:
        known = [] if table is None else table.names
        if program.has_pixels or not set(self.columns) <= set(known):
            _nodusmath.check(self._source(), self.name, None if table is None else known, False)

    def _repr_svg_(self) -> str | None:
        """For notebooks; by the program dot of Graphviz."""
        try:
            dot = self._compiled().draw(os.path.basename(self.name))
            return subprocess.run(["dot", "-Tsvg"], input=dot, capture_output=True, text=True,
                                  check=True, encoding="utf-8").stdout
        except (GraphError, OSError, subprocess.CalledProcessError):
            return None

    def __repr__(self) -> str:
        try:
            listed = ", ".join(f"{name}: {kind}" for name, kind in self.outputs.items())
        except GraphError as error:
            return f"<Graph {self.name}, with faults: {error.lines[0]}>"
        return f"<Graph {self.name}: ({', '.join(self.columns)}) -> ({listed})>"

    def __getstate__(self) -> dict[str, Any]:
        return {**self.__dict__, "_program": None}


def _check_frames(least: int, greatest: int) -> None:
    limits = np.iinfo(np.int32)
    if least < limits.min or greatest > limits.max:
        raise ValueError(f"frames are whole numbers from {limits.min} to {limits.max}")


def _first_frame(first: int, count: int) -> int:
    _check_frames(first, first + count - 1)
    return int(first)


def _rows_of(table: Table | None, frames: Any, numbers: npt.NDArray[np.int32]) -> Any:
    """Which rows of the table the frames read: something to index with."""
    if numbers.ndim > 1:
        raise ValueError(f"frames have one axis, not {numbers.ndim}")
    if table is None or table.rows is None:
        return slice(None)
    outside = (numbers < 0) | (numbers >= table.rows)
    if outside.any():
        worst = numbers[outside].flat[0]
        known = ("its rows count from 0" if worst < 0 else
                 f"its rows are 0 to {table.rows - 1}" if table.rows else "it has no rows")
        raise GraphError([f"frame {worst} is outside columns: {known}"])
    if isinstance(frames, range) and frames.step > 0:
        return slice(frames.start, frames.stop, frames.step)
    return np.atleast_1d(numbers)


def _int32(numbers: npt.NDArray[Any]) -> npt.NDArray[np.int32]:
    if numbers.dtype.kind not in "iu" and numbers.size:
        raise TypeError(f"frames are whole numbers, not {numbers.dtype}")
    if numbers.size:
        _check_frames(numbers.min(), numbers.max())
    return np.require(numbers, np.int32, "A")


def _columns_of(program: _nodusmath.Program, table: Table | None, rows: Any
                ) -> list[npt.NDArray[Any]]:
    if table is None:
        return []
    faults: list[str] = []
    arrays = []
    for name, type_name in program.columns:
        array, wrong = table.column(name, type_name)
        faults += wrong
        arrays.append(array[rows] if array.ndim else array)
    if len(faults) > MOST_FAULTS:
        faults[MOST_FAULTS:] = [f"these are the first {MOST_FAULTS} faults of the table; there may be more"]
    if faults:
        raise GraphError(faults)
    return arrays


def _empty_results(program: _nodusmath.Program, count: int) -> tuple[list[Any], list[int]]:
    """Arrays to write to, and which outputs are texts."""
    results, texts = [], []
    for place, (_, type_name) in enumerate(program.outputs):
        dtype, shape, _ = types[type_name]
        results.append(np.empty((0 if type_name == "String" else count, *shape), dtype))
        if type_name == "String":
            texts.append(place)
    return results, texts


def _data_frame(program: _nodusmath.Program, results: Results, like: Any, rows: Any) -> Any:
    import pandas

    lanes: dict[str, npt.NDArray[Any]] = {}
    for name, type_name in program.outputs:
        names, array = types[type_name].lanes, results[name]
        if array.dtype.names:
            array = np.concatenate([array[part] for part in array.dtype.names], axis=1)
        for lane, values in zip(names, array.reshape(len(array), len(names)).T):
            lanes[f"{name}.{lane}" if lane else name] = values
    index = like.index[rows]
    return pandas.DataFrame(lanes, index=index)
