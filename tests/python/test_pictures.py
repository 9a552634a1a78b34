"""Pictures, as the command makes them."""

import os
import subprocess

import corvane
import numpy as np
import pytest

SKY = np.random.default_rng(11).normal(900, 12, (120, 160)).astype(np.float32)


def test_render_has_the_bytes_of_the_command(tmp_path):
    corvane.write(tmp_path / "in.fits", SKY)
    for name, words, given in [
        ("a.png", [], {}),
        ("b.jpg", ["--quality", "70", "--size", "50"], {"quality": 70, "size": 50}),
        ("c.tif", ["--stretch", "linear"], {"stretch": "linear"}),
    ]:
        subprocess.check_call([os.environ["CORVANE"], "render", tmp_path / "in.fits", "-o", tmp_path / name, *words])
        image = corvane.read(tmp_path / "in.fits")
        assert corvane.render(image, tmp_path / f"python_{name}", **given) is None
        assert (tmp_path / f"python_{name}").read_bytes() == (tmp_path / name).read_bytes()
    assert corvane.render(image) == (tmp_path / "a.png").read_bytes() == image._repr_png_()
    assert np.array_equal(image, SKY)


def test_develop_is_the_recipe(tmp_path):
    corvane.write(tmp_path / "in.fits", SKY)
    (tmp_path / "own.txt").write_text("# by hand\nautostretch:target=0.2\nsaturate:gain=2\n")
    subprocess.check_call(
        [os.environ["CORVANE"], "-q", "develop", tmp_path / "in.fits", "-o", tmp_path / "out.fits"]
        + ["--recipe", tmp_path / "own.txt"]
    )
    made = corvane.develop(corvane.read(tmp_path / "in.fits"), tmp_path / "own.txt")
    assert np.array_equal(made, corvane.read(tmp_path / "out.fits")) and len(made.header.history) == 1
    for name in ("galaxy", "nebula", "cluster", "moon"):
        assert corvane.develop(SKY, name).shape == SKY.shape


@pytest.mark.parametrize(
    "call, message",
    [
        (lambda: corvane.render(SKY, stretch="bright"), "stretch = bright: must be auto, linear or asinh"),
        (lambda: corvane.render(SKY, "a.gif"), "a.gif"),
        (lambda: corvane.develop(SKY, "comet"), "recipe = comet: must be galaxy"),
    ],
)
def test_errors(call, message):
    with pytest.raises(corvane.Error) as error:
        call()
    assert message in str(error.value)
