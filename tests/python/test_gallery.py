"""The examples do what they say, on a night whose truth is known."""

import json
import re
import subprocess
import sys
from pathlib import Path

import corvane
import numpy as np
import pytest

ROOT = Path(__file__).parents[2]
EXAMPLES = ROOT / "examples" / "python"


@pytest.fixture(scope="module")
def folder(night, tmp_path_factory):
    folder = tmp_path_factory.mktemp("gallery")
    (folder / "night").symlink_to(night)
    return folder


def lights(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.glob("night/light_*.fits"))


def run(folder, name, *words):
    return subprocess.run(
        [sys.executable, EXAMPLES / f"{name}.py", *words], cwd=folder, check=True, capture_output=True, text=True
    ).stdout


def test_every_example_is_tried():
    tests = Path(__file__).read_text()
    for example in EXAMPLES.glob("*.py"):
        assert f'"{example.stem}"' in tests, example


def test_night(folder):
    told = run(folder, "night", "night", "stack.fits")
    one, stack, best = map(float, re.search(r"sky: ([\d.]+) .*, ([\d.]+) .*best ([\d.]+)", told).groups())
    assert best < one and stack < one and corvane.read(folder / "stack.fits").shape == (300, 320)


def test_photometry(folder):
    star = corvane.find_stars(corvane.read(folder / lights(folder)[0]))[2]
    told = run(folder, "photometry", str(star["x"]), str(star["y"]), *lights(folder))
    magnitudes = [float(line.split()[1]) for line in told.splitlines()]
    assert len(magnitudes) == 5 and magnitudes[0] == 0 and np.abs(magnitudes).max() < 0.1


def test_ccddata(folder):
    light = lights(folder)[0]
    run(folder, "ccddata", light, "night/dark_001.fits", "night/flat_001.fits", "calibrated.fits")
    expected = corvane.dark(corvane.read(folder / light), file=folder / "night/dark_001.fits")
    expected = corvane.flat(expected, file=folder / "night/flat_001.fits")
    assert np.array_equal(corvane.read(folder / "calibrated.fits"), expected)


def test_restore(folder):
    told = run(folder, "restore", "stack.fits", "sharp.fits")
    before, after = map(float, re.findall(r"([\d.]+) pixels", told))
    assert after < 0.8 * before


def test_colour(folder):
    run(folder, "colour", *lights(folder)[:3], "colour.png")
    assert corvane.read(folder / "colour.png").shape == (3, 300, 320)


def test_seeing(folder):
    told = run(folder, "seeing", "seeing.png", *lights(folder))
    assert len(told.splitlines()) == 5 and all(" pixels, " in line for line in told.splitlines())


def test_notebooks(night, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    subprocess.check_call([sys.executable, ROOT / "docs" / "make-notebooks", tmp_path])
    assert {path.stem for path in tmp_path.glob("*.ipynb")} == {path.stem for path in EXAMPLES.glob("*.py")}
    for path in tmp_path.glob("*.ipynb"):
        made = json.loads(path.read_text())
        cells = ["".join(cell["source"]) for cell in made["cells"]]
        for cell in cells[1:]:
            compile(cell, path.name, "exec")
        program = (EXAMPLES / f"{path.stem}.py").read_text().split('"""\n', 1)[1]
        assert made["nbformat"] == 4 and "".join(program.split()) in "".join("".join(cells[2:]).split())
    cells = ["".join(cell["source"]) for cell in json.loads(Path("night.ipynb").read_text())["cells"]]
    names = {}
    for cell in [cells[1].replace("FOLDER", str(night)), *cells[2:]]:
        exec(cell, names)
    shown = names[cells[-1]]._repr_html_()
    assert Path("STACK.fits").exists() and "data:image/png;base64,iVBOR" in shown and shown.count("<tr>") == 6
