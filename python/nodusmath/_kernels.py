"""A function for each kernel, made from the catalogue."""
import collections

from . import _help, _nodusmath

__all__ = list(_help.described())

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


for _name, _described in _help.described().items():
    globals()[_name] = _nodusmath.kernel(_name, _results(_described), _help.about)
