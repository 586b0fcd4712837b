"""Math node kernels over NumPy arrays, and graphs of them over tables and images.

    import nodusmath as nm
    nm.Slerp_Quat(a, b, t)           # arrays broadcast as NumPy's do
    nm.find("blend")                 # which kernels there are; help(nm.Slerp_Quat) describes one
    nm.Graph("skeleton.json").evaluate(columns=table)
"""
import json as _json

from . import _nodusmath

# An extension that is loaded already is handed on without being asked.
if not _nodusmath.is_main_interpreter():
    raise ImportError("nodusmath works in the main interpreter alone, not in a sub-interpreter")

# Errors and log lines are known to the extension before anything else asks for it.
from ._graph import Graph, GraphError, Results, column, frame, logger, pixel, set_threads  # noqa: E402
from ._help import find  # noqa: E402
from ._kernels import *  # noqa: E402,F401,F403
from ._kernels import __all__ as _kernel_names  # noqa: E402
from ._table import tqs, types  # noqa: E402

with open(_nodusmath.catalogue_path, encoding="utf-8") as _file:
    #: The node types as data: groups, families, ports, edge cases, examples.
    catalogue: dict[str, object] = _json.load(_file)

__all__ = ["Graph", "GraphError", "Results", "catalogue", "column", "find", "frame", "logger",
           "pixel", "set_threads", "tqs", "types"]
__all__ += _kernel_names
