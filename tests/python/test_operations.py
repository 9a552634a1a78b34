"""Functions made of the catalogue."""

import inspect
import json
import os
import signal
import subprocess
import sys
import threading
import time

import corvane
import numpy as np
import pytest
from astropy.io import fits

COMMAND = os.environ["CORVANE"]
SKY = np.random.default_rng(5).normal(1000, 10, (90, 120)).astype(np.float32)
COLOUR = np.stack([SKY, SKY[::-1], SKY[:, ::-1]])


def field():
    """A sky with Gaussian stars."""
    rng = np.random.default_rng(7)
    image = rng.normal(500, 5, (200, 240))
    y, x = np.mgrid[:200, :240]
    for _ in range(25):
        across, down, peak = rng.uniform(15, 225), rng.uniform(15, 185), rng.uniform(500, 9000)
        image += peak * np.exp(-((x - across) ** 2 + (y - down) ** 2) / (2 * 1.6**2))
    return image.astype(np.float32)


def test_every_operation_is_a_function_and_documented():
    operations = json.loads(subprocess.check_output([COMMAND, "ops", "--json"]))
    for operation in operations:
        function = getattr(corvane, operation["name"].replace("-", "_"))
        names = [name.rstrip("_") for name in inspect.signature(function).parameters]
        for parameter in operation["parameters"]:
            assert parameter["name"].replace("-", "_") in names


def test_every_name_is_documented():
    for name in dir(corvane):
        told = (getattr(corvane, name).__doc__ or "").strip()
        signature = told.startswith(f"{name}(")  # as the engine puts it before its own words
        assert told.partition("\n\n")[2] if signature else told, name


def test_results_are_those_of_the_command(tmp_path):
    corvane.write(tmp_path / "in.fits", COLOUR)
    steps = ["median:type=2", "curve:points=0:0/0.3:0.6/1:1", "crop:rect=3:4:80:70", "unsharp:amount=1.5"]
    subprocess.check_call([COMMAND, "apply", tmp_path / "in.fits", *steps, "-o", tmp_path / "out.fits"])
    expected = corvane.read(tmp_path / "out.fits")
    image = corvane.read(tmp_path / "in.fits")
    by_text = corvane.apply(image, *steps)
    by_name = corvane.median(image, type=2)
    by_name = corvane.curve(by_name, points=[(0, 0), (0.3, 0.6), (1, 1)])
    by_name = corvane.unsharp(corvane.crop(by_name, rect=(3, 4, 80, 70)), amount=1.5)
    for made in (by_text, by_name):
        corvane.write(tmp_path / "made.fits", made)
        assert (tmp_path / "made.fits").read_bytes() == (tmp_path / "out.fits").read_bytes()
    assert np.array_equal(expected, by_text) and np.array_equal(image, COLOUR)


@pytest.mark.parametrize(
    "call, step",
    [
        (lambda: corvane.subtract(SKY, value=np.float32(3)), "subtract:value=3"),
        (lambda: corvane.subtract(SKY, value=3, clip_negative=np.bool_(True)), "subtract:value=3,clip-negative=yes"),
        (lambda: corvane.rank(SKY, rank=np.int64(3)), "rank:rank=3"),
        (lambda: corvane.crop(SKY, rect=np.array([1, 2, 30, 40])), "crop:rect=1:2:30:40"),
        (lambda: corvane.median(SKY, shape="square3"), "median"),
        (lambda: corvane.add(SKY, value=1, rect=None), "add:value=1"),
    ],
)
def test_values_as_python_has_them(call, step):
    made = call()
    assert made.header.history == ["corvane apply " + step]
    assert np.array_equal(made, corvane.apply(SKY, step))


def test_images_as_values(tmp_path):
    dark = np.full_like(SKY, 10)
    corvane.write(tmp_path / "dark.fits", dark)
    for given in (dark, corvane.Image(dark), tmp_path / "dark.fits", str(tmp_path / "dark.fits")):
        assert np.array_equal(corvane.dark(SKY, file=given), SKY - 10)


def test_several_images_and_numbers():
    made = corvane.rgb(*COLOUR, align="none", full=True)
    assert np.array_equal(made.image, COLOUR)
    assert np.array_equal(corvane.composite(SKY, SKY, mode="sum"), SKY + SKY)
    assert corvane.stats(SKY)["mean"][0] == pytest.approx(SKY.mean(), rel=1e-6)
    stars = corvane.find_stars(field())
    assert len(stars) >= 20 and stars["flux"][0] == stars["flux"].max() and stars.dtype["flags"].kind == "U"
    assert np.median(stars["fwhm"]) == pytest.approx(2.3548 * 1.6, rel=0.05)
    place = corvane.match(SKY[20:60, 30:80], SKY)
    assert (place["x"], place["y"]) == (30, 20)


def test_several_images_stay_as_they_are(tmp_path):
    """A write to a file that is mapped for reading would end the process."""
    stars = field()
    stars.tofile(tmp_path / "stars")
    mapped = np.memmap(tmp_path / "stars", np.float32, "r", shape=stars.shape)
    holed = fits.PrimaryHDU(np.round(stars).astype(np.int16))
    holed.header["BLANK"] = 500
    holed.writeto(tmp_path / "blanks.fits")
    blanks = corvane.read(tmp_path / "blanks.fits")
    before = np.array(blanks)
    assert blanks.blank is not None
    for call in [
        lambda image: corvane.composite(image, image, mode="sum"),
        lambda image: corvane.mosaic(image, image, dx=3.5),
        lambda image: corvane.rgb(mapped, image, image, balance="sky"),
        lambda image: corvane.palette([mapped, image], palette="hoo", balance="sky"),
        lambda image: corvane.continuum(image, mapped),
        lambda image: corvane.cmy(image, image, image, align="none"),
    ]:
        for image in (mapped, blanks):
            made = call(image)
            made[...] = 0
            assert np.array_equal(mapped, stars) and np.array_equal(blanks, before)


@pytest.mark.parametrize(
    "call, kind, message",
    [
        (lambda: corvane.rank(SKY, rank=99), ValueError, "rank: rank = 99: must be 0 to 20"),
        (lambda: corvane.gaussian(SKY, sigma=object()), ValueError, "gaussian: sigma"),
        (lambda: corvane.crop(SKY, rect=(0, 0, 9, 999)), ValueError, "crop: rect = 0:0:9:999: must lie within"),
        (lambda: corvane.split(SKY, component="r"), ValueError, "split: image: must have 3 planes; it has 1"),
        (lambda: corvane.median(SKY, threads=-1), ValueError, "threads = -1: must be 0 to 1024"),
        (lambda: corvane.median("a.fits"), TypeError, "image must be an image or an array"),
        (lambda: corvane.median(SKY, radius=2), TypeError, "radius"),
        (lambda: corvane.apply(SKY, "nothing"), ValueError, "nothing"),
        (lambda: corvane.read("no.fits"), OSError, "no.fits: no such file"),
        (lambda: corvane.write("a.xyz", SKY), OSError, "unknown format"),
        (lambda: corvane.dark(SKY, file="no.fits"), OSError, "no.fits: no such file"),
    ],
)
def test_errors(call, kind, message):
    with pytest.raises(kind) as error:
        call()
    assert message in str(error.value)
    assert isinstance(error.value, (corvane.Error, TypeError))


def test_progress_tells_and_ends_the_work(capsys, monkeypatch):
    big = np.tile(SKY, (8, 8))
    heard = []
    corvane.gaussian(big, sigma=3, progress=lambda *what: heard.append(what))
    assert heard[0][1] == 0 and heard[-1][1] == heard[-1][2] > 0
    for bar in ("tqdm.auto", "tqdm"):
        corvane.gaussian(big, sigma=3, progress=True)
        assert heard[0][0] in capsys.readouterr().err
        monkeypatch.setitem(sys.modules, bar, None)  # not installed: a line does it

    class Enough(Exception):
        pass

    def stop(*what):
        raise Enough(what)

    image = corvane.Image(big)
    with pytest.raises(Enough):
        corvane.gaussian(image, sigma=3, progress=stop)
    assert np.array_equal(image, big)


def test_ctrl_c_ends_the_work():
    big = np.tile(SKY, (6, 6)) + 1
    pressed = []

    def press():
        pressed.append(time.monotonic())
        signal.raise_signal(signal.SIGINT)

    timer = threading.Timer(0.3, press)
    timer.start()
    with pytest.raises(KeyboardInterrupt):
        for _ in range(1000):
            corvane.lucy(big, sigma=2, iterations=50)
    ended = time.monotonic()
    timer.join()
    assert ended - pressed[0] < 0.5


def test_two_threads_work_side_by_side():
    both = threading.Barrier(2)
    images = [np.tile(SKY, (4, 4)), np.tile(SKY[::-1], (4, 4))]
    made = {}

    def work(which):
        heard = []

        def listen(*what):
            if not heard:
                both.wait(30)  # until the other is at work, too
            heard.append(what)

        made[which] = np.asarray(corvane.gaussian(images[which], sigma=2, progress=listen, threads=1))

    threads = [threading.Thread(target=work, args=[which]) for which in (0, 1)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not both.broken and all(np.array_equal(made[i], corvane.gaussian(images[i], sigma=2)) for i in (0, 1))


def test_threads_give_the_same():
    big = np.tile(SKY, (8, 8))
    for call in (lambda n: corvane.gaussian(big, sigma=2, threads=n), lambda n: corvane.rotate(big, angle=3, threads=n)):
        assert np.array_equal(call(1), call(5), equal_nan=True)
