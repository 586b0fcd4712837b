"""Times the Python package beside NumPy, numexpr, SciPy and pandas, and prints tables for docs/python.md.

usage: PYTHONPATH=build/release/python /usr/bin/python3 benchmarks/python.py
One process, one thread of each library; the fastest of repetitions that take turns.
"""
import os

for variable in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "NUMEXPR_NUM_THREADS"):
    os.environ[variable] = "1"

import pathlib
import time

import numexpr
import numpy as np
import pandas as pd
from scipy.spatial.transform import Rotation

import nodusmath as nm

numexpr.set_num_threads(1)
SECONDS, LEAST_ROUNDS = 1.0, 5
EXAMPLES = pathlib.Path(__file__).parents[1] / "examples"


def seconds(function, calls):
    begin = time.perf_counter()
    for _ in range(calls):
        function()
    return (time.perf_counter() - begin) / calls


def fastest(functions):
    """The least time of each; they take turns, so that what disturbs one disturbs all."""
    calls = [max(1, int(0.0002 / max(seconds(function, 1), 1e-9))) for function in functions]
    best = [float("inf")] * len(functions)
    end, rounds = time.perf_counter() + SECONDS, 0
    while rounds < LEAST_ROUNDS or time.perf_counter() < end:
        rounds += 1
        for i, function in enumerate(functions):
            best[i] = min(best[i], seconds(function, calls[i]))
    return best


def elementwise(rows):
    random = np.random.default_rng(5)
    a, b, c = (random.uniform(0.1, 1, rows).astype(np.float32) for _ in range(3))
    v, w = (random.uniform(0.1, 1, (rows, 3)).astype(np.float32) for _ in range(2))
    m = random.uniform(0.1, 1, (rows, 4, 4)).astype(np.float32)
    whole, double = random.integers(0, 1000, rows).astype(np.int32), a.astype(np.float64)
    yield "Add_Float", lambda: nm.Add_Float(a, b), "NumPy", lambda: a + b
    yield "Mul_Float", lambda: nm.Mul_Float(a, b), "NumPy", lambda: a * b
    yield "Div_Float", lambda: nm.Div_Float(a, b), "NumPy", lambda: a / b
    yield "Add_Int32", lambda: nm.Add_Int32(whole, whole), "NumPy", lambda: whole + whole
    yield "Add_Float3", lambda: nm.Add_Float3(v, w), "NumPy", lambda: v + w
    yield "Add_Float3, one row", lambda: nm.Add_Float3(v, w[0]), "NumPy", lambda: v + w[0]
    yield "LessThan_Float", lambda: nm.LessThan_Float(a, b), "NumPy", lambda: a < b
    yield "Abs_Float", lambda: nm.Abs_Float(a), "NumPy", lambda: np.abs(a)
    yield "Floor_Float", lambda: nm.Floor_Float(a), "NumPy", lambda: np.floor(a)
    yield "Sqrt_Float", lambda: nm.Sqrt_Float(a), "NumPy", lambda: np.sqrt(a)
    yield "Clamp_Float", lambda: nm.Clamp_Float(a, 0.2, 0.4), "NumPy", lambda: np.clip(a, np.float32(0.2), np.float32(0.4))
    yield "DotProduct_Float3", lambda: nm.DotProduct_Float3(v, w), "NumPy", lambda: np.einsum("ij,ij->i", v, w)
    yield "CrossProduct_Float3", lambda: nm.CrossProduct_Float3(v, w), "NumPy", lambda: np.cross(v, w)
    yield "Length_Float3", lambda: nm.Length_Float3(v), "NumPy", lambda: np.sqrt((v * v).sum(axis=1))
    yield "Normalize_Float3", lambda: nm.Normalize_Float3(v), "NumPy", lambda: v / np.sqrt((v * v).sum(axis=1, keepdims=True))
    yield "Mul_Matrix4x4", lambda: nm.Mul_Matrix4x4(m, m), "NumPy", lambda: m @ m
    yield "Exp_Float", lambda: nm.Exp_Float(a), "NumPy", lambda: np.exp(a)
    yield "Sin_Float", lambda: nm.Sin_Float(a), "NumPy", lambda: np.sin(a)
    yield "Sin_Double", lambda: nm.Sin_Double(double), "NumPy", lambda: np.sin(double)
    yield "Pow_Float", lambda: nm.Pow_Float(a, b), "NumPy", lambda: np.power(a, b)
    yield "ACos_Float", lambda: nm.ACos_Float(a), "NumPy", lambda: np.arccos(a)
    formula = nm.Graph()
    square = formula.add("Mul_Float", a=nm.column("a"), b=nm.column("b"))
    total = formula.add("Add_Float", a=square, b=nm.column("c"))
    formula.output(formula.add("Sqrt_Float", value=formula.add("Abs_Float", value=total)))
    columns = {"a": a, "b": b, "c": c}
    yield ("a graph, sqrt(abs(a*b+c))", lambda: formula.evaluate(columns=columns), "numexpr",
           lambda: numexpr.evaluate("sqrt(abs(a*b+c))", columns))
    yield "the same", lambda: formula.evaluate(columns=columns), "NumPy", lambda: np.sqrt(np.abs(a * b + c))


def rotations(rows):
    random = np.random.default_rng(6)
    angles = np.zeros((rows, 4), np.float32)
    angles[:, :3] = random.uniform(-1.5, 1.5, (rows, 3))
    vectors = random.uniform(-1, 1, (rows, 3)).astype(np.float32)
    turns = nm.EulerToQuaternion(angles)
    # Theirs are doubles: they are given what they work with.
    own, wide = angles[:, :3].astype(np.float64), vectors.astype(np.float64)
    theirs = Rotation.from_quat(turns)
    yield "EulerToQuaternion", lambda: nm.EulerToQuaternion(angles), "SciPy from_euler", lambda: Rotation.from_euler("xyz", own)
    yield "QuaternionToEuler", lambda: nm.QuaternionToEuler(turns), "SciPy as_euler", lambda: theirs.as_euler("xyz")
    yield "Mul_Quat", lambda: nm.Mul_Quat(turns, turns), "SciPy multiply", lambda: theirs * theirs
    yield "RotateVector_Float3", lambda: nm.RotateVector_Float3(vectors, turns), "SciPy apply", lambda: theirs.apply(wide)


def tables(rows):
    walk = pd.read_csv(EXAMPLES / "walk.csv")
    table = pd.concat([walk] * (rows // len(walk) + 1), ignore_index=True).iloc[:rows]
    graph = nm.Graph()
    x, y, z = (nm.column(f"hips.t{axis}") for axis in "xyz")
    far = graph.add("Distance_Float3", a=[x, y, z], b=[0, 18, 0])
    graph.output(graph.add("Clamp_Float", value=far, min=0, max=10))

    def frame():
        squares = table["hips.tx"] ** 2 + (table["hips.ty"] - 18) ** 2 + table["hips.tz"] ** 2
        return (squares ** 0.5).clip(0, 10)

    yield "a graph, distance and clamp", lambda: graph.evaluate(columns=table), "pandas", frame


def single_values():
    q, v, t = np.array([0, 0, 0, 1], np.float32), np.ones(3, np.float32), nm.tqs()
    yield "Add_Float(1.0, 2.0)", lambda: nm.Add_Float(1.0, 2.0)
    yield "SinCos_Double(0.5)", lambda: nm.SinCos_Double(0.5)
    yield "RandomGenerator_Float(seed=7)", lambda: nm.RandomGenerator_Float(seed=7)
    yield "Add_Float3([1, 2, 3], v)", lambda: nm.Add_Float3([1, 2, 3], v)
    yield "Slerp_Quat(a=q, b=q, t=0.5)", lambda: nm.Slerp_Quat(a=q, b=q, t=0.5)
    yield "TransformTQS(t, t)", lambda: nm.TransformTQS(t, t)
    yield "np.add(1.0, 2.0)", lambda: np.add(1.0, 2.0)


def main():
    nm.set_threads(1)
    print("| | beside | 1,000 rows | 1,000,000 rows |\n|---|---|---:|---:|")
    for group in (elementwise, rotations, tables):
        for small, large in zip(group(1000), group(1_000_000)):
            ratios = [theirs / ours for ours, theirs in (fastest([case[1], case[3]]) for case in (small, large))]
            print(f"| {small[0]} | {small[2]} | {ratios[0]:.2f} | {ratios[1]:.2f} |", flush=True)
    print("\n| one call | microseconds |\n|---|---:|")
    for name, function in single_values():
        print(f"| `{name}` | {fastest([function])[0] * 1e6:.2f} |", flush=True)


main()
