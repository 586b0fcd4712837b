"""Arrays of NumPy go in and come out: what numpy.save writes nodus reads, and numpy.load the other way.

usage: numpy_test.py NODUS
"""
import os
import subprocess
import sys
import tempfile

import numpy as np

NODUS = os.path.abspath(sys.argv[1])
GRAPH = """{"nodes": {
    "v": {"type": "Add_Float3", "inputs": {"a": [{"column": "x"}, {"column": "y"}, 1], "b": [0.5, 0, 0]}},
    "d": {"type": "Abs_Double", "inputs": {"value": {"column": "y"}}},
    "n": {"type": "Add_Int32", "inputs": {"a": {"column": "n"}, "b": {"frame": true}}},
    "u": {"type": "Abs_UInt32", "inputs": {"value": {"column": "it's"}}},
    "b": {"type": "Not", "inputs": {"value": {"column": "on"}}}},
    "outputs": ["v", "d", "n", "u", "b"]}"""
TEXT = '{"nodes": {"t": {"type": "LogValueString"}}, "outputs": ["t"]}'


def run(*arguments):
    done = subprocess.run([NODUS, "eval", *arguments], capture_output=True, text=True, check=False)
    return done.returncode, done.stderr


def expect(what, expected, got):
    if expected != got:
        sys.exit(f"{what}: expected {expected!r}, got {got!r}")


def table(rows, types):
    made = np.zeros(rows, dtype=types)
    index = np.arange(rows)
    made["x"], made["y"], made["n"] = index * 0.1, -index / 3, index % 7
    made["it's"], made["on"] = index, index % 2
    return made


def evaluates(rows, types):
    data = table(rows, types)
    np.save("in.npy", data)
    for extra in ([], ["--threads", "3"], ["--one-by-one"]):
        expect("eval", (0, ""), run("g.json", "--data", "in.npy", "--out", "out.npy", *extra))
        out = np.load("out.npy")
        expect("shape", (rows,), out.shape)
        expect("frames", True, np.array_equal(out["frame"], np.arange(rows)))
        x = data["x"].astype(np.float32) + np.float32(0.5)
        y = data["y"].astype(np.float32)
        expect("v.x", x.tobytes(), out["v.result.x"].tobytes())
        expect("v.y", (y + np.float32(0)).tobytes(), out["v.result.y"].tobytes())
        expect("v.z", np.ones(rows, "<f4").tobytes(), out["v.result.z"].tobytes())
        expect("d", np.abs(data["y"].astype("<f8")).tobytes(), out["d.result"].tobytes())
        expect("n", (data["n"] + np.arange(rows)).astype("<i4").tobytes(), out["n.result"].tobytes())
        expect("u", data["it's"].astype("<u4").tobytes(), out["u.result"].tobytes())
        expect("b", (data["on"] == 0).tobytes(), out["b.result"].tobytes())


def refuses(why, data, expected):
    np.save("in.npy", data)
    status, told = run("g.json", "--data", "in.npy", "--out", "no.npy")
    expect(why, (2, f"nodus: {expected}\n"), (status, told))
    expect(why, False, os.path.exists("no.npy"))


def main():
    with open("g.json", "w", encoding="utf-8") as file:
        file.write(GRAPH)
    with open("t.json", "w", encoding="utf-8") as file:
        file.write(TEXT)
    plain = [("x", "<f4"), ("y", "<f8"), ("n", "<i4"), ("it's", "<u4"), ("on", "?")]
    evaluates(5000, plain)
    evaluates(0, plain)
    evaluates(300, [("y", ">f8"), ("on", "u1"), ("x", "f8"), ("n", ">i2"), ("it's", "<i8")])
    evaluates(300, np.dtype([("on", "i1"), ("x", "f8"), ("n", "f4"), ("it's", "f8"), ("y", "f4"),
                             ("gr\u00f6\u00dfe", "u8")], align=True))

    good = table(3, plain)
    wide = table(3, [("x", "<f8"), ("y", "<f8"), ("n", "<f8"), ("it's", "<i4"), ("on", "i1")])
    wide["x"][1], wide["n"][2], wide["it's"][2], wide["on"][2] = 1e300, 0.5, -1, 2
    refuses("numbers", wide, "\nnodus: ".join([
        "in.npy: row 1: column 'x': '1e+300' is beyond every Float",
        "in.npy: row 2: column 'n': '0.5' is not a whole number",
        "in.npy: row 2: column 'it's': '-1' is outside UInt32 (0 to 4294967295)",
        "in.npy: row 2: column 'on': '2' is not true, false, 1 or 0"]))
    refuses("no fields", np.zeros(3),
            "in.npy: wants a structured array, a field with a name for each column")
    refuses("two dimensions", good.reshape(1, 3), "in.npy: wants one dimension, the rows, not 2")
    refuses("a field of three", np.zeros(3, [("x", "f4", (3,))]),
            "in.npy: field 'x' has several numbers a row; give a field for each")
    refuses("a field of text", np.zeros(3, [("x", "S3")]),
            "in.npy: field 'x' is '|S3'; a column is b1, i1 to i8, u1 to u8, f4 or f8")
    np.save("in.npy", good)
    os.truncate("in.npy", os.path.getsize("in.npy") - 1)
    expect("a short file", (2, "nodus: in.npy: ends in row 2 of 3\n"),
           run("g.json", "--data", "in.npy", "--out", "no.npy"))
    expect("texts", (2, "nodus: output 't.result' is a text, for which an .npy file has no room\n"),
           run("t.json", "--out", "no.npy"))


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    main()
