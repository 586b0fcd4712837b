"""Kernels over arrays: the bits of the module's own entry points, whatever the arrays look like."""
import ctypes
import inspect
import pathlib
import pickle
import pydoc

import hypothesis.extra.numpy as arrays
import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

import nodusmath as nm
from nodusmath import _nodusmath

MODULE = ctypes.CDLL(str(pathlib.Path(_nodusmath.catalogue_path).with_name("libnodusmath.so")))
DESCRIBED = {one["name"]: one for one in _nodusmath.describe()}
PLAIN = sorted(name for name, one in DESCRIBED.items() if not one["asks_for_frame"])
ALIGNED = {"TQS": 16, "Float2": 4, "Float3": 4}


def places(ports):
    """Where ports lie in a block, and where it ends."""
    end, offsets = 0, []
    for port in ports:
        dtype, shape, _ = nm.types[port["type"]]
        size = dtype.itemsize * int(np.prod(shape, dtype=int))
        alignment = ALIGNED.get(port["type"], min(size, 16))
        end += -end % alignment
        offsets.append((end, size))
        end += size
    return offsets, end


def block(size):
    """16 bytes aligned, as kernels want blocks."""
    memory = np.zeros(size + 16, np.uint8)
    start = -memory.ctypes.data % 16
    return memory[start:start + size]


def by_module(name, values):
    """One row, by the module's own entry point."""
    one = DESCRIBED[name]
    (inputs, in_size), (outputs, out_size) = places(one["inputs"]), places(one["outputs"])
    given_block, result = block(in_size), block(out_size)
    for (offset, size), value in zip(inputs, values):
        given_block[offset:offset + size] = np.frombuffer(np.ascontiguousarray(value).tobytes(), np.uint8)
    MODULE[f"Nodus{name}_Solve"](ctypes.c_void_p(given_block.ctypes.data), ctypes.c_void_p(result.ctypes.data))
    return [result[offset:offset + size].tobytes() for offset, size in outputs]


def bits(values, port):
    """Every NaN is as good as another."""
    array = np.frombuffer(values, np.uint8) if isinstance(values, bytes) else np.asarray(values)
    dtype, _, _ = nm.types[port["type"]]
    lanes = np.frombuffer(array.tobytes(), "<f4" if port["type"] == "TQS" else dtype).copy()
    if lanes.dtype.kind == "f":
        lanes[np.isnan(lanes)] = np.nan
    return lanes.tobytes()


def random_values(random, port, shape):
    dtype, core, _ = nm.types[port["type"]]
    if port["type"] == "TQS":
        return nm.tqs(*(random.normal(size=(*shape, 4)) for _ in "tqs"))
    if dtype == bool:
        return random.integers(0, 2, (*shape, *core)).astype(bool)
    if dtype.kind in "iu":
        return random.integers(0, 30, (*shape, *core)).astype(dtype)
    values = random.normal(scale=2, size=(*shape, *core)).astype(dtype)
    special = random.random(values.shape) < 0.05
    return np.where(special, random.choice([np.nan, np.inf, -np.inf, -0.0], values.shape), values).astype(dtype)


def unaligned(array):
    memory = np.zeros(array.nbytes + 1, np.uint8)[1:]
    moved = memory.view(array.dtype).reshape(array.shape) if array.ndim and array.size else array.copy()
    moved[...] = array
    return moved


def read_only(array):
    array = array.copy()
    array.flags.writeable = False
    return array


LAYOUTS = {
    "as it is": lambda array: array,
    "backwards": lambda array: array[::-1].copy()[::-1] if array.ndim else array,
    "every second": lambda array: np.repeat(array, 2, axis=0)[::2] if array.ndim else array,
    "Fortran's order": lambda array: array.copy(order="F"),
    "unaligned": unaligned,
    "other byte order": lambda array: array.astype(array.dtype.newbyteorder()),
    "read-only": read_only,
}


@settings(max_examples=400, deadline=None, derandomize=True)
@given(st.data())
def test_any_shapes_and_layouts_have_the_modules_bits(data):
    name = data.draw(st.sampled_from(PLAIN))
    ports = DESCRIBED[name]["inputs"]
    shapes = data.draw(arrays.mutually_broadcastable_shapes(
        num_shapes=len(ports), max_dims=3, min_side=0, max_side=4))
    random = np.random.default_rng(data.draw(st.integers(0, 1000)))
    values = [random_values(random, port, shape) for port, shape in zip(ports, shapes.input_shapes)]
    laid = [LAYOUTS[data.draw(st.sampled_from(sorted(LAYOUTS)))](value) for value in values]
    outputs = DESCRIBED[name]["outputs"]
    cores = [nm.types[port["type"]].shape for port in outputs]
    place = data.draw(st.sampled_from(sorted(LAYOUTS.keys() - {"other byte order", "read-only"})))
    out = tuple(LAYOUTS[place](np.ones(shapes.result_shape + core, nm.types[port["type"]].dtype))
                if data.draw(st.booleans()) else None for port, core in zip(outputs, cores))
    got = getattr(nm, name)(*laid, out=out)
    results = got if len(outputs) > 1 else [got]
    assert all(array is None or array is result for array, result in zip(out, results)), name
    for result, port, core in zip(results, outputs, cores):
        assert np.shape(result) == (*shapes.result_shape, *core), name
        assert np.asarray(result).dtype == nm.types[port["type"]].dtype
    same = [np.broadcast_to(value, shapes.result_shape + nm.types[port["type"]].shape)
            for value, port in zip(values, ports)]
    for row in np.ndindex(shapes.result_shape):
        expected = by_module(name, [value[row] for value in same])
        for result, port, wanted in zip(results, outputs, expected):
            assert bits(np.asarray(result)[row], port) == bits(wanted, port), name


def test_results_may_go_where_inputs_are():
    numbers = np.arange(12, dtype=np.float32)
    for inputs, out in [(slice(None), slice(None)), (slice(None, -1), slice(1, None)), (slice(1, None), slice(None, -1)),
                        (slice(None, None, -1), slice(None))]:
        memory = numbers.copy()
        assert nm.Add_Float(memory[inputs], 1, out=memory[out]).tolist() == (numbers[inputs] + 1).tolist()
    assert nm.Add_Float(1, [[2], [3]], out=np.empty((2, 2), "f4")).tolist() == [[3, 3], [4, 4]]
    both = np.empty(2, "f4")
    assert [*map(np.ndarray.tolist, nm.SinCos_Float([0, 0], out=(both, both)))] == [[1, 1], [1, 1]]
    frames = np.arange(3, dtype=np.int32)
    drawn = nm.RandomGenerator_Int32(seed=1, range=99, frames=frames)
    assert nm.RandomGenerator_Int32(seed=1, range=99, frames=frames, out=frames) is frames
    assert frames.tolist() == drawn.tolist()
    texts = np.empty(2, object)
    assert nm.LogValueString(["a", "b"], out=texts) is texts and texts.tolist() == ["a", "b"]


def test_every_kernel_has_the_graphs_standard_inputs():
    graph = nm.Graph({"nodes": {name: {"type": name} for name in PLAIN}, "outputs": PLAIN})
    results = graph.evaluate()
    for name in PLAIN:
        outputs = DESCRIBED[name]["outputs"]
        got = getattr(nm, name)()
        for port, value in zip(outputs, got if len(outputs) > 1 else [got]):
            assert bits(value, port) == bits(results[f"{name}.{port['name']}"], port), name


def test_every_kernel_has_its_help():
    for name in nm._kernels.__all__:
        kernel = getattr(nm, name)
        assert pickle.loads(pickle.dumps(kernel)) is kernel
        assert "Inputs" in kernel.__doc__ and name in repr(kernel)
        assert [*inspect.signature(kernel).parameters][:len(DESCRIBED[name]["inputs"])] == [
            nm._help.parameter_name(port["name"]) for port in DESCRIBED[name]["inputs"]]
    assert "EulerToQuaternion(angles: Float4" in pydoc.plain(pydoc.render_doc(nm.EulerToQuaternion))
    assert "in rad" in nm.Sin_Float.__doc__
    assert nm.find("blend")[0].__name__ in ("Lerp_Quat", "Slerp_Quat")
    assert nm.find("no such thing") == []
    assert {family["name"] for family in nm.catalogue["families"]} == {one["family"] for one in DESCRIBED.values()}


@pytest.mark.parametrize("call, expected", [
    (lambda: nm.Sin_Float(0.5), np.float32),
    (lambda: nm.Sin_Double(0.5), np.float64),
    (lambda: nm.Add_Int32(1, 2), np.int32),
    (lambda: nm.Equal_Float(1, 1), np.bool_),
    (lambda: nm.Add_Float3((1, 2, 3), [1, 2, 3]), np.ndarray),
    (lambda: nm.SinCos_Float(1).sine, np.float32),
    (lambda: nm.Sin_Float(np.array(0.5, np.float32)), np.float32),
    (lambda: nm.Sin_Float([0.5]), np.ndarray),
    (lambda: nm.InverseTQS(nm.tqs()[()]), np.void),
    (lambda: nm.LogValueString("text"), str),
])
def test_single_values_are_numpys_scalars(call, expected):
    assert type(call()) is expected


big = np.arange(3) + 2**31


@pytest.mark.parametrize("call, error, told", [
    (lambda: nm.Sin_Float(np.array([0.5])), TypeError, "port 'value' wants Float, not an array of float64"),
    (lambda: nm.Sin_Float(np.float64(0.5)), TypeError, "port 'value' wants Float, not an array of float64"),
    (lambda: nm.Sin_Float(1e300), TypeError, "1e+300 is beyond every"),
    (lambda: nm.Sin_Float([1e300]), TypeError, "1e+300 is beyond every"),
    (lambda: nm.Sin_Float("x"), TypeError, "port 'value' wants Float, not an array of <U1"),
    (lambda: nm.Sin_Float(None), TypeError, "port 'value' wants Float"),
    (lambda: nm.Sin_Float(1j), TypeError, "not an array of complex128"),
    (lambda: nm.Add_Int32(2**31, 0), TypeError, r"port 'a' wants Int32; 2147483648 is outside"),
    (lambda: nm.Add_Int32(big, 0), TypeError, "2147483648 to 2147483650 are beyond"),
    (lambda: nm.Add_Int32(0.5, 0), TypeError, "port 'a' wants Int32, not an array of float64"),
    (lambda: nm.Add_UInt8(0, b=-1), TypeError, "port 'b' wants UInt8; -1 is outside"),
    (lambda: nm.Add_Float(big, 0), TypeError, "port 'a' wants Float; the numbers from 2147483648"),
    (lambda: nm.Not([2]), TypeError, "the numbers from 2 to 2 are beyond 0 to 1"),
    (lambda: nm.InverseTQS([1, 2, 3]), TypeError, "a structured array with the fields t, q and s"),
    (lambda: nm.LogValueFloat(1, prefix=3), TypeError, "port 'prefix' wants String, a str, not 3"),
    (lambda: nm.Add_Float3([1, 2], 0), ValueError, r"port 'a' wants Float3, an array of shape \(..., 3\), not \(2,\)"),
    (lambda: nm.Add_Float3([[1, 2, 3], [1]]), TypeError, "port 'a' wants Float3"),
    (lambda: nm.Add_Float([1, 2], [1, 2, 3]), ValueError, r"do not go together: \(2,\), \(3,\)"),
    (lambda: nm.Add_Float(1, 2, 3), TypeError, "Add_Float has 2 inputs, not 3: a and b"),
    (lambda: nm.Add_Float(c=1), TypeError, "Add_Float has no input 'c'; it has a and b"),
    (lambda: nm.Add_Float(1, a=1), TypeError, "Add_Float is given 'a' twice"),
    (lambda: nm.Add_Float(1, frames=1), TypeError, "has no input 'frames'"),
    (lambda: nm.RandomGenerator_Float(frames=[0.5]), TypeError, "port 'frames' wants Int32"),
    (lambda: nm.Add_Float(1, 2, out=[0]), TypeError, "Add_Float: out wants an array, not list for 'result'"),
    (lambda: nm.Add_Float(1, 2, out=np.empty(())), TypeError, "an array of float32, not of float64"),
    (lambda: nm.Add_Float(1, 2, out=read_only(np.ones(1, "f4"))), ValueError, "not one to be read only"),
    (lambda: nm.Abs_Float3([1, 2, 3], out=np.empty(4, "f4")), ValueError, r"shape \(..., 3\), not \(4,\)"),
    (lambda: nm.Add_Float([1, 2], 0, out=np.empty(3, "f4")), ValueError, r"shape \(2,\), not \(3,\)"),
    (lambda: nm.Add_Float([1, 2], 0, out=np.empty(1, "f4")), ValueError, r"shape \(2,\), not \(1,\)"),
    (lambda: nm.SinCos_Float(1, out=np.empty((), "f4")), TypeError, "a tuple with an array for each of sine and cosine"),
    (lambda: nm.Add_Float(1, 2, out=(None, None)), TypeError, "a tuple with an array for each of result"),
])
def test_what_is_lost_or_does_not_fit_is_refused(call, error, told):
    with pytest.raises(error, match=told.replace("+", r"\+")):
        call()


def test_nothing_is_lost_on_the_way():
    halves = np.array([0.5, -1.25], np.float16)
    assert nm.Abs_Double(np.float32([0.1])) == np.float64(np.float32(0.1))
    assert nm.Abs_Float(halves).tolist() == [0.5, 1.25]
    assert nm.Add_Int32(np.int64([7]), np.uint8([1])).tolist() == [8]
    assert nm.Add_Float([], []).shape == (0,) and nm.Add_Float3(np.empty((0, 3), "f4"), 0 * np.ones(3, "f4")).size == 0
    assert nm.Abs_Float(16777217) == np.float32(16777217)  # to the nearest, once
    assert nm.Abs_Float(2**100) == np.float32(2.0**100)
    assert nm.Not(np.array([0, 1])).tolist() == [True, False]
    assert nm.QuatArcRotate(from_=[1, 0, 0, 0], to=[0, 1, 0, 0]).tobytes() == nm.QuatArcRotate(
        **{"fr" + "om": np.array([1, 0, 0, 0]), "t" + "o": [0, 1, 0, 0]}).tobytes()


def test_random_values_know_their_frames():
    settings_ = dict(seed=7, distribution=0, value=0.0, range=1.0)
    many = nm.RandomGenerator_Float(**settings_, frames=range(-50, 3000))
    assert len(set(many.tolist())) > 3000
    assert nm.RandomGenerator_Float(**settings_) == many[50]
    backwards = nm.RandomGenerator_Float(**settings_, frames=np.arange(2999, -51, -1))
    assert backwards.tobytes() == many[::-1].tobytes()
    seeds = nm.RandomGenerator_Float(seed=[[7], [8]], value=0.0, frames=range(5))
    assert seeds.shape == (2, 5) and seeds[0].tobytes() == many[50:55].tobytes()


def test_logging_kernels_are_heard(caplog):
    with caplog.at_level("INFO", "nodusmath"):
        passed = nm.LogValueFloat([1, 2], prefix=["a ", "two\nlines "], frames=[3, 4])
        texts = nm.LogValueString([["x"], ["y"]])
    assert passed.tolist() == [1, 2] and texts.tolist() == [["x"], ["y"]]
    assert [(record.frame, record.getMessage()) for record in caplog.records] == [
        (3, "frame 3: a 1.000000"), (4, "frame 4: two\nlines 2.000000"), (0, "frame 0: x"), (0, "frame 0: y")]
