"""A night from Python: the bytes of the command."""

import os
import subprocess

import corvane
import numpy as np
import pytest


def test_stack_has_the_bytes_of_the_command(night, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    heard = []
    made = corvane.stack(night, maps=True, progress=lambda *what: heard.append(what[0]))
    corvane.write("python.fits", made.image)
    subprocess.check_call([os.environ["CORVANE"], "-q", "stack", night, "-o", "command.fits"])
    assert open("python.fits", "rb").read() == open("command.fits", "rb").read()
    assert made.lights["used"].all() and len(made.lights) == 5 and made.lights["weight"].max() == 1
    assert made.coverage.shape == made.noise.shape == made.image.shape and made.weights is None
    assert made.rejection == "winsorized" and made.depth[2] > 0 and len(set(heard)) > 3


def test_a_stack_that_is_ended_leaves_nothing(night, tmp_path):
    class Enough(Exception):
        pass

    def stop(stage, done, total):
        if "registered" in stage and done > 1:
            raise Enough

    with pytest.raises(Enough):
        corvane.stack(night, registered=tmp_path / "lights", masters=tmp_path / "masters", progress=stop)
    assert not list(tmp_path.glob("lights/*"))


def test_register_tells_how_lights_lie(night):
    lights = sorted(str(path) for path in night.glob("light_*.fits"))
    made = corvane.register(lights, reference=lights[0])
    truth = np.genfromtxt(night / "offsets.csv", delimiter=",", names=True, dtype=None, encoding=None)
    assert made.reference == 0 and made.lights["matched"][1:].min() > 5
    moved = np.hypot(made.lights["dx"], made.lights["dy"])
    assert moved[0] == 0 and np.all(np.diff(moved) > 0) and len(truth) == 5


def test_errors_name_what_is_wrong(night):
    with pytest.raises(corvane.FileError, match="nowhere: no such file"):
        corvane.stack(night / "nowhere")
    with pytest.raises(corvane.ArgumentError):
        corvane.stack([])
    with pytest.raises(corvane.ArgumentError, match="low = -1"):
        corvane.stack(night, low=-1)
