"""What type checkers know of the package."""
import subprocess
import sys

RIGHT = """
import numpy as np
import nodusmath as nm
from numpy.typing import NDArray

turned: NDArray[np.float32] = nm.Slerp_Quat([0, 0, 0, 1], b=np.eye(4), t=0.5)
both = nm.SinCos_Double(0.5)
print(both.sine, nm.RandomGenerator_Float(seed=7, frames=range(3)), nm.find("blend"), nm.catalogue)
print(nm.QuatArcRotate(from_=[1, 0, 0, 0]))
nm.SinCos_Float(turned, out=(turned, None))
nm.Add_Float(turned, 1, out=turned)
graph = nm.Graph("g.json")
spin = graph.add("Mul_Quat", a=nm.column("x"), b=[0, 0, 0, nm.frame])
graph.output(spin.result.x, spin)
image: NDArray[np.float32] = graph.image(640, 480, progress=lambda done, total: None)
print(graph.evaluate(range(3), {"x": [1, 2]}, threads=2), nm.types["TQS"].dtype, nm.tqs(), nm.pixel.x)
"""
WRONG = {
    "nm.Add_Float(1, 2, 3)": "Too many positional arguments",
    "nm.Add_Float(c=1)": "Unexpected keyword argument",
    "nm.Add_Float(1, frames=2)": "Unexpected keyword argument",
    "nm.SinCos_Float(1, out=nm.Slerp_Quat())": "incompatible type",
    "nm.SinCos_Float(1).sinus": "has no attribute",
    "nm.Normalise_Float3([1, 2, 3])": "has no attribute",
    "nm.Graph(3)": "incompatible type",
}


def mypy(folder, *what):
    return subprocess.run([sys.executable, "-m", "mypy", "--strict", "--ignore-missing-imports", "--cache-dir",
                           "/dev/null", *what], capture_output=True, text=True, check=False, cwd=folder)


def test_programs_are_checked_by_the_stubs(tmp_path):
    (tmp_path / "right.py").write_text(RIGHT)
    (tmp_path / "wrong.py").write_text("import nodusmath as nm\n" + "\n".join(WRONG))
    told = mypy(tmp_path, "right.py", "wrong.py").stdout.splitlines()
    assert not [line for line in told if line.startswith("right.py")]
    for number, (call, why) in enumerate(WRONG.items(), start=2):
        assert any(line.startswith(f"wrong.py:{number}:") and why in line for line in told), call


def test_the_package_itself_is_strict(tmp_path):
    done = mypy(tmp_path, "-p", "nodusmath")
    assert done.returncode == 0, done.stdout
