"""A night from Python: the bytes of the command."""

import os
import subprocess

import corvane
import numpy as np
import pytest


@pytest.fixture(scope="module")
def night(tmp_path_factory):
    folder = tmp_path_factory.mktemp("night")
    options = "--lights 5 --darks 3 --flats 3 --bias 0 --size 300x260".split()
    subprocess.check_call([os.environ["MAKE_NIGHT"], folder / "night", *options], stdout=subprocess.DEVNULL)
    return folder


def test_stack_has_the_bytes_of_the_command(night, monkeypatch):
    monkeypatch.chdir(night)
    heard = []
    made = corvane.stack("night", maps=True, progress=lambda *what: heard.append(what[0]))
    corvane.write("python.fits", made.image)
    subprocess.check_call([os.environ["CORVANE"], "-q", "stack", "night", "-o", "command.fits"])
    assert open("python.fits", "rb").read() == open("command.fits", "rb").read()
    assert made.lights["used"].all() and len(made.lights) == 5 and made.lights["weight"].max() == 1
    assert made.coverage.shape == made.noise.shape == made.image.shape and made.weights is None
    assert made.rejection == "winsorized" and made.depth[2] > 0 and len(set(heard)) > 3


def test_register_tells_how_lights_lie(night, monkeypatch):
    monkeypatch.chdir(night)
    lights = sorted(str(path) for path in (night / "night").glob("light_*.fits"))
    made = corvane.register(lights, reference=lights[0])
    truth = np.genfromtxt(night / "night" / "offsets.csv", delimiter=",", names=True, dtype=None, encoding=None)
    assert made.reference == 0 and made.lights["matched"][1:].min() > 5
    moved = np.hypot(made.lights["dx"], made.lights["dy"])
    assert moved[0] == 0 and np.all(np.diff(moved) > 0) and len(truth) == 5


def test_errors_name_what_is_wrong(night):
    with pytest.raises(corvane.FileError, match="nowhere: no such file"):
        corvane.stack(night / "nowhere")
    with pytest.raises(corvane.ArgumentError):
        corvane.stack([])
    with pytest.raises(corvane.ArgumentError, match="low = -1"):
        corvane.stack(night / "night", low=-1)
