"""The schema of graph files: it takes every example and every graph of the page on them, and it and nodus agree on the
shape of others.

usage: schema_test.py NODUS EXAMPLES PAGE
"""
import glob
import json
import os
import re
import subprocess
import sys
import tempfile

import jsonschema

NODUS, EXAMPLES, PAGE = map(os.path.abspath, sys.argv[1:])
schema = json.loads(subprocess.run([NODUS, "manual", "schema"], check=True, capture_output=True).stdout)
jsonschema.Draft7Validator.check_schema(schema)
validator = jsonschema.Draft7Validator(schema)

with open(PAGE, encoding="utf-8") as page:
    graphs = [("graph_file.md", text) for text in re.findall(r"```json\n(.*?)```", page.read(), re.S)]
for path in glob.glob(EXAMPLES + "/*.json"):
    with open(path, encoding="utf-8") as file:
        graphs.append((path, file.read()))
assert len(graphs) > 10, graphs
for name, text in graphs:
    faults = [fault.message[:300] for fault in validator.iter_errors(json.loads(text))]
    assert not faults, (name, faults)


def node(kind, inputs):
    return {"nodes": {"n": {"type": kind, "inputs": inputs}}}


GOOD = [
    {"$schema": "graph.schema.json", "comment": [1], "description": "d", **node("NodusAbs_Float_Solve", {"value": "inf"})},
    node("Abs_Float", {"value": {"column": "x", "row": -1, "default": "nan", "comment": 1}}),
    node("Abs_Float", {"value": {"column": "x", "rows": [-2, 2], "window": "max"}}),
    node("Abs_Float", {"value": {"pixel": "y"}}),
    node("Abs_Int32", {"value": 1e3}),
    node("Abs_Int32", {"value": {"frame": True}}),
    node("RandomGenerator_Float", {"distribution": "normal"}),
    node("RandomGenerator_Float", {"distribution": 1}),
    node("AxisAndAngleToQuaternion_Float3", {"axis": [0, {"column": "y"}, "=z * 2"], "angle": "-.5e2 deg"}),
    {"parameters": {"t": {"type": "TQS", "value": {"t": [1, 2, 3, 1]}}, "a": {"type": "Float", "unit": "deg", "value": "1rad"},
                    "s": {"type": "String", "value": "=text"}},
     "nodes": {"n": {"type": "Abs_Float", "inputs": {"value": {"parameter": "t.t.x"}}}}, "outputs": ["n"]},
]
BAD = [
    [],
    {"outputs": []},
    {"nodes": {}, "output": []},
    {"nodes": {}, "outputs": "n"},
    {"nodes": {"a.b": {"type": "Abs_Float"}}},
    {"nodes": {"n": {"inputs": {}}}},
    {"nodes": {"n": {"type": "Abs_Flaot"}}},
    {"nodes": {"n": {"type": "Abs_Float", "input": {}}}},
    {"nodes": {"": {"type": "Abs_Float"}}},
    node("NodusAbs_Flaot_Solve", {}),
    node("Abs_Float", {"valeu": 1}),
    node("NodusAbs_Float_Solve", {"valeu": 1}),
    node("Abs_Float", {"value": True}),
    node("Abs_Float", {"value": "90deg"}),
    node("Abs_Float", {"value": {}}),
    node("Abs_Float", {"value": {"frame": True}}),
    node("Abs_Float", {"value": {"pixel": "z"}}),
    node("Abs_Float", {"value": {"column": "x", "pixel": "x"}}),
    node("Abs_Float", {"value": {"column": "x", "frame": 1}}),
    node("Abs_Float", {"value": {"column": "x", "row": 10001}}),
    node("Abs_Float", {"value": {"column": "x", "rows": [0, 1]}}),
    node("Abs_Float", {"value": {"column": "x", "window": "mean"}}),
    node("Abs_Float", {"value": {"column": "x", "rows": [0, 1, 2], "window": "mean"}}),
    node("Abs_Float", {"value": {"column": "x", "row": 1, "rows": [0, 1], "window": "mean"}}),
    node("Abs_Float3", {"value": [1, 2]}),
    node("Abs_Float3", {"value": {"column": "x"}}),
    node("Abs_Int32", {"value": 1.5}),
    node("Abs_Int32", {"value": 2**31}),
    node("RandomGenerator_Float", {"distribution": "gauss"}),
    node("AxisAndAngleToQuaternion_Float3", {"angle": "90dg"}),
    {"nodes": {}, "parameters": {"p": {"value": 1}}},
    {"nodes": {}, "parameters": {"p.q": {"type": "Float"}}},
    {"nodes": {}, "parameters": {"p": {"type": "Flaot"}}},
    {"nodes": {}, "parameters": {"p": {"type": "Float", "unit": "m"}}},
    {"nodes": {}, "parameters": {"p": {"type": "Float", "value": "90deg"}}},
    {"nodes": {}, "parameters": {"p": {"type": "Float3", "value": [1, 2]}}},
    {"nodes": {}, "parameters": {"p": {"type": "Int32", "value": {"frame": True}}}},
    {"nodes": {}, "parameters": {"p": {"type": "Int32", "vlaue": 1}}},
]
wrong = []
with tempfile.TemporaryDirectory() as folder:
    path = os.path.join(folder, "g.json")
    for graph, is_good in [(graph, True) for graph in GOOD] + [(graph, False) for graph in BAD]:
        with open(path, "w", encoding="utf-8") as file:
            json.dump(graph, file)
        told = subprocess.run([NODUS, "describe", path], check=False, capture_output=True, text=True)
        verdicts = validator.is_valid(graph), told.returncode == 0
        if verdicts != (is_good, is_good):
            wrong.append((graph, verdicts, told.stderr))
assert not wrong, wrong
