"""The programs of the documentation: each runs by itself and prints what stands below it."""
import pathlib
import re
import subprocess
import sys

import matplotlib.image
import numpy as np
import pytest

ROOT = pathlib.Path(__file__).parents[2]
BLOCK = re.compile(r"```python\n(.*?)```\n(?:```text\n(.*?)```\n)?", re.DOTALL)
PYTHON = BLOCK.findall((ROOT / "docs/python.md").read_text())


def run(program, folder):
    (folder / "examples").symlink_to(ROOT / "examples")
    (folder / "program.py").write_text(program)
    done = subprocess.run([sys.executable, "-B", "-W", "ignore", "program.py"], cwd=folder, capture_output=True,
                          text=True, check=False, timeout=60)
    assert done.returncode == 0, done.stderr
    return done.stdout


@pytest.mark.parametrize("number", range(len(PYTHON)))
def test_a_recipe_of_the_python_page(number, tmp_path):
    program, printed = PYTHON[number]
    assert run(program, tmp_path) == printed
    for picture in tmp_path.glob("*.png"):
        made, shown = (matplotlib.image.imread(path) for path in (picture, ROOT / "docs/images" / picture.name))
        assert made.shape == shown.shape and np.abs(made - shown).mean() < 0.01, picture.name


def test_the_first_recipe_has_fifteen_lines():
    assert len(PYTHON) == 6 and len(PYTHON[0][0].split("\n\n", 1)[1].splitlines()) <= 15


def test_the_recipe_of_the_farm_page(tmp_path):
    [(program, _)] = BLOCK.findall((ROOT / "docs/farm.md").read_text())
    assert run(program, tmp_path) == "36 rows\n"
