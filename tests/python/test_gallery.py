"""The examples do what they say, on a night whose truth is known."""

import os
import re
import subprocess
import sys
from pathlib import Path

import corvane
import numpy as np
import pytest

EXAMPLES = Path(__file__).parents[2] / "examples" / "python"


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    folder = tmp_path_factory.mktemp("gallery")
    options = "--lights 4 --darks 2 --flats 2 --bias 0 --size 320x300".split()
    subprocess.check_call([os.environ["MAKE_NIGHT"], folder / "night", *options], stdout=subprocess.DEVNULL)
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
    assert len(magnitudes) == 4 and magnitudes[0] == 0 and np.abs(magnitudes).max() < 0.1


def test_ccddata(folder):
    run(folder, "ccddata", lights(folder)[0], "night/dark_001.fits", "night/flat_001.fits", "calibrated.fits")
    expected = corvane.dark(corvane.read(folder / lights(folder)[0]), file=folder / "night/dark_001.fits")
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
    assert len(told.splitlines()) == 4 and all(" pixels, " in line for line in told.splitlines())
