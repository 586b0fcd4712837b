"""Graphs: the command's bytes and the command's words, over frames, tables and images."""
import json
import os
import pathlib
import pickle
import subprocess

import numpy as np
import pandas as pd
import pytest

import nodusmath as nm

NODUS = os.environ["NODUS"]
EXAMPLES = pathlib.Path(__file__).parents[2] / "examples"
TABLES = {"skeleton": "walk", "drive": "drive", "signal": "signal"}
FRAMES = {"flipbook": range(0, 60, 5), "scatter": range(21), "noise": range(-7, 500)}
SPIN = {
    "nodes": {
        "turn": {"type": "RandomGenerator_Float", "inputs": {"seed": 7, "value": {"column": "x"}}},
        "whole": {"type": "Add_Int32", "inputs": {"a": {"frame": True}, "b": {"column": "n"}}},
        "wide": {"type": "Abs_Double", "inputs": {"value": {"column": "x"}}},
        "spin": {"type": "AxisAndAngleToQuaternion_Float3",
                 "inputs": {"axis": [0, 0, 1], "angle": {"from": "turn"}}},
        "name": {"type": "LogValueString", "inputs": {"value": "word"}}},
    "outputs": ["turn", "whole", "wide", "spin", "name"]}


def nodus(*arguments, **options):
    return subprocess.run([NODUS, *map(str, arguments)], capture_output=True, text=True, check=False, **options)


def lanes(results, kinds):
    """As the command's files have them: an array for each lane."""
    for name, array in results.items():
        for lane, values in zip(nm.types[kinds[name]].lanes, array.reshape(len(array), -1).T):
            yield (f"{name}.{lane}" if lane else name), np.ascontiguousarray(values)


@pytest.mark.parametrize("name", [*TABLES, *FRAMES])
def test_examples_have_the_commands_bytes(name, tmp_path, caplog):
    graph = nm.Graph(EXAMPLES / f"{name}.json")
    log, out = tmp_path / "log", tmp_path / "out.npy"
    if name in TABLES:
        table = EXAMPLES / f"{TABLES[name]}.csv"
        options = ["--data", table]
        columns, frames = pd.read_csv(table, float_precision="round_trip"), None
    else:
        frames, columns = FRAMES[name], None
        options = ["--frames", f"{frames.start}:{frames[-1]}:{frames.step}"]
    done = nodus("eval", EXAMPLES / f"{name}.json", *options, "--out", out, "--log", log)
    assert done.returncode == 0, done.stderr
    expected = np.load(out)
    with caplog.at_level("INFO", "nodusmath"):
        given = None if columns is None else {key: columns[key].to_numpy() for key in columns}
        results = graph.evaluate(frames, given, threads=2)
    got = dict(lanes(results, graph.outputs))
    assert list(got) == [field for field in expected.dtype.names if field != "frame"]
    for key, values in got.items():
        assert values.tobytes() == np.ascontiguousarray(expected[key]).tobytes(), key
    assert "".join(f"{record.getMessage()}\n" for record in caplog.records) == log.read_text()
    if columns is not None:
        framed = graph.evaluate(columns=columns)
        assert {key: framed[key].to_numpy().tobytes() for key in framed} == {
            key: values.tobytes() for key, values in got.items()}


def test_images_have_the_commands_values(tmp_path):
    graph = nm.Graph(EXAMPLES / "clouds.json")
    image = graph.image(160, 75, frame=40, threads=2)
    path = tmp_path / "clouds.pfm"
    assert nodus("eval", EXAMPLES / "clouds.json", "--image", path, "--size", "160x75", "--frames", 40).returncode == 0
    lines = path.read_bytes().split(b"\n", 3)
    rows = np.frombuffer(lines[3], "<f4").reshape(75, 160, 3)[::-1]
    assert image.dtype == np.float32 and image.shape == (75, 160, 4)
    assert image[..., :3].tobytes() == rows.tobytes()


BROKEN = """{"nodes": {
  "a": {"type": "Ad_Float", "inputs": {}},
  "b": {"type": "Add_Float", "inputs": {"a": {"from": "c"}, "z": 1, "b": [1, 2]}}},
  "outputs": ["b", "nobody"]}"""


@pytest.mark.parametrize("text, table, image", [
    (BROKEN, None, False), ("{", None, False), ("[]", None, False), ('{"nodes": {"a": 1, "a": 2}}', None, False),
    ('{"nodes": {"a": {"type": "Abs_Float", "inputs": {"value": {"column": "y"}}}}}', None, False),
    ('{"nodes": {"a": {"type": "Abs_Float", "inputs": {"value": {"column": "hight"}}}}}', "height\n1\n", False),
    ('{"nodes": {"a": {"type": "Abs_Float", "inputs": {"value": {"pixel": "y"}}}}}', None, False),
    ('{"nodes": {"a": {"type": "Abs_Int32", "inputs": {"value": {"column": "n"}}}}, "outputs": ["a"]}',
     "n\n1\n0.5\n3e9\nnan\n", False),
    ('{"nodes": {"a": {"type": "Abs_Float2"}}, "outputs": ["a"]}', None, True)])
def test_faults_are_all_there_in_the_commands_words(text, table, image, tmp_path):
    path, data = tmp_path / "g.json", tmp_path / "t.npy"
    path.write_text(text)
    columns = None
    if table:
        names, *rows = table.split()
        columns = np.array([(float(row),) for row in rows], [(names, "f8")])
        np.save(data, columns)
    options = ["--data", data] if table else ["--image", tmp_path / "p.png"] if image else []
    expected = nodus("eval", path, *options)
    assert expected.returncode == 2
    with pytest.raises(nm.GraphError) as caught:
        graph = nm.Graph(path)
        graph.image(8, 8) if image else graph.evaluate(columns=columns)
    told = [line.removeprefix("nodus: ").replace(str(data), "columns") for line in expected.stderr.splitlines()]
    assert list(caught.value.lines) == told
    assert str(pickle.loads(pickle.dumps(caught.value))) == "\n".join(told)


def test_rows_frames_and_kinds_of_tables():
    graph = nm.Graph(SPIN)
    assert graph.columns == ["x", "n"] and graph.outputs["spin.result"] == "Quaternion"
    x, n = np.linspace(0, 1, 50), np.arange(50)
    whole = graph.evaluate(columns={"x": x, "n": n, "unused": ["text"] * 50})
    assert whole["name.result"].tolist() == ["word"] * 50 and whole["spin"].shape == (50, 4)
    assert whole["wide"].tobytes() == x.tobytes()
    frame = pd.DataFrame({"x": x, "n": pd.array(n, "Int64")}, index=np.arange(50) * 10)
    structured = frame.astype({"n": "i4"}).to_records(index=False)
    for frames, picked in [(None, slice(None)), (range(3, 40, 4), slice(3, 40, 4)), ([9, 2, 2], [9, 2, 2])]:
        for columns in (frame, structured, {"x": x[::-1].copy()[::-1], "n": n.astype(float)}):
            got = graph.evaluate(frames, columns)
            assert np.asarray(got["whole.result"]).tobytes() == whole["whole.result"][picked].tobytes()
            turned = got["spin.result.w"] if columns is frame else got["spin"][:, 3]
            assert np.asarray(turned).tobytes() == whole["spin.result"][picked][:, 3].tobytes()
        assert graph.evaluate(frames, frame).index.tolist() == np.asarray(frame.index)[picked].tolist()
    # A part of a longer table, one value for all rows, one frame, none.
    part = graph.evaluate(columns=frame.iloc[20:30], first_frame=20)
    assert part["turn.result"].to_numpy().tobytes() == whole["turn"][20:30].tobytes()
    assert graph.evaluate(7, {"x": x, "n": n})["turn"].shape == ()
    assert graph.evaluate(range(2), {"x": 0.5, "n": 3})["whole"].tolist() == [3, 4]
    assert graph.evaluate(columns=frame.iloc[:0])["spin.result.x"].shape == (0,)
    for call, error, told in [
            (lambda: graph.evaluate(50, frame), nm.GraphError, "frame 50 is outside columns: its rows are 0 to 49"),
            (lambda: graph.evaluate([-1], frame), nm.GraphError, "frame -1 is outside columns: its rows count from 0"),
            (lambda: graph.evaluate(0.5, frame), TypeError, "frames are whole numbers"),
            (lambda: graph.evaluate(2**31, frame), ValueError, "frames are whole numbers from"),
            (lambda: graph.evaluate(columns=[1]), TypeError, "columns want a data frame"),
            (lambda: graph.evaluate(columns={"x": x, "n": n[1:]}), ValueError, "'x' has 50, 'n' has 49"),
            (lambda: graph.evaluate(columns={"x": ["a"], "n": [1]}), nm.GraphError, "'x' is <U1, not numbers"),
            (lambda: graph.image(1, 1), nm.GraphError, "and an image is evaluated without one")]:
        with pytest.raises(error, match=told):
            call()


def test_graphs_that_are_built_up_here():
    graph = nm.Graph()
    angle = graph.add("Mul_Float", "angle", a=nm.column("t"), b=np.float32(0.1))
    turn = graph.add("AxisAndAngleToQuaternion_Float3", axis=(0, 0, 1), angle=angle)
    both = graph.add("SinCos_Float", value=angle.result)
    to = graph.add("TransformTQS", a={"t": [both.sine, both.cosine, nm.column("t"), 0], "q": turn}, b=nm.tqs(t=(1, 2, 3, 0)))
    matrix = graph.add("Abs_Matrix4x4", value=-np.eye(4))
    graph.output(to, turn.result.w, matrix)
    t = np.arange(5, dtype=np.float32)
    results = graph.evaluate(columns={"t": t})
    angles = nm.Mul_Float(t, np.float32(0.1))
    spun = nm.AxisAndAngleToQuaternion_Float3([0, 0, 1], angles)
    sine, cosine = nm.SinCos_Float(angles)
    moved = nm.TransformTQS(nm.tqs(t=np.stack([sine, cosine, t, 0 * t], -1), q=spun), nm.tqs(t=(1, 2, 3, 0)))
    assert results[to.text].tobytes() == moved.tobytes() and results[f"{matrix.text}.result"].shape == (5, 4, 4)
    assert results[f"{turn.text}.result.w"].tobytes() == spun[:, 3].tobytes()
    again = nm.Graph(json.loads(graph.to_json()))
    assert pickle.loads(pickle.dumps(again)).evaluate(columns={"t": t})[to.text].tobytes() == moved.tobytes()
    frame = graph.evaluate(columns=pd.DataFrame({"t": t}))
    assert frame[f"{to.text}.result.q.w"].to_numpy().tobytes() == moved["q"][:, 3].tobytes()
    assert graph._repr_svg_().rstrip().endswith("</svg>") and "TransformTQS" in graph._repr_svg_()
    with pytest.raises(ValueError, match="already"):
        graph.add("Abs_Float", "angle")
    graph.add("Abs_Float", "wrong", value=to)
    assert "with faults: graph:" in repr(graph) and graph._repr_svg_() is None
    with pytest.raises(nm.GraphError, match="wants Float"):
        graph.evaluate(columns={"t": t})
