"""nodus eval --watch: table, graph and a graph in it are changed, broken and mended, and it evaluates again.

usage: watch_test.py NODUS
"""
import json
import os
import signal
import subprocess
import sys
import tempfile

NODUS = os.path.abspath(sys.argv[1])


def write(path, content):
    """As editors do it: a new file in place of the old one."""
    with open(path + "~", "w", encoding="utf-8") as file:
        file.write(content if isinstance(content, str) else json.dumps(content))
    os.replace(path + "~", path)


def scaled(factor):
    return {"parameters": {"x": {"type": "Float"}},
            "nodes": {"n": {"type": "Mul_Float", "inputs": {"a": {"parameter": "x"}, "b": factor}}}, "outputs": ["n"]}


def outer(column):
    return {"nodes": {"in": {"type": "inner.json", "inputs": {"x": {"column": column}}}}, "outputs": ["in"]}


STEPS = [  # what is written, what is told then, and the results
    ("t.csv", "x,y\n3,5\n", "note: evaluated again", "0,6"),
    ("inner.json", scaled(4), "note: evaluated again", "0,12"),
    ("inner.json", "{", "nodus: inner.json:1: ", "0,12"),
    ("t.csv", "x,y\n30,5\n", "nodus: inner.json:1: ", "0,12"),
    ("inner.json", scaled(2), "note: evaluated again", "0,60"),
    ("g.json", outer("z"), "nodus: g.json:1: ", "0,60"),
    ("g.json", outer("y"), "note: evaluated again", "0,10"),
]
with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    write("t.csv", "x,y\n1,2\n")
    write("inner.json", scaled(2))
    write("g.json", outer("x"))
    command = [NODUS, "eval", "g.json", "--data", "t.csv", "--out", "r.csv", "--watch"]
    with subprocess.Popen(command, stderr=subprocess.PIPE, text=True) as watching:
        try:
            told = watching.stderr.readline()
            assert told == "note: watching g.json, t.csv and inner.json; Ctrl-C ends\n", told
            for path, content, wanted, results in STEPS:
                write(path, content)
                told = watching.stderr.readline()
                with open("r.csv", encoding="utf-8") as file:
                    rows = file.read().splitlines()[1:]
                assert told.startswith(wanted) and rows == [results], (path, content, told, rows)
            watching.send_signal(signal.SIGINT)
            assert watching.wait(20) == -signal.SIGINT, watching.returncode
        finally:
            watching.kill()
    refused = subprocess.run([NODUS, "eval", "-", "--watch"], check=False, capture_output=True, text=True)
    assert (refused.returncode, refused.stderr) == (2, "nodus: --watch wants files, not standard input\n"), refused
