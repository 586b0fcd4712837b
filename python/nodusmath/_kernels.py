"""A function for each kernel, made from the catalogue."""
import collections

from . import _help, _nodusmath

__all__ = [described["name"] for described in _nodusmath.describe()]

_TUPLES = {}


def _results(described):
    """What makes one tuple of several outputs."""
    names = tuple(port["name"] for port in described["outputs"])
    if len(names) == 1:
        return None
    family = described["family"]
    if family not in _TUPLES:
        _TUPLES[family] = globals()[family + "Results"] = collections.namedtuple(
            family + "Results", names, module=__name__)
    return _TUPLES[family]


for _described in _nodusmath.describe():
    globals()[_described["name"]] = _nodusmath.kernel(
        _described["name"], _results(_described), _help.about)
