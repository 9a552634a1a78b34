"""Images as arrays: who owns the samples, and who may write to them."""

import gc
import sys
import threading

import corvane
import numpy as np
import pytest


def ramp(*shape):
    return np.arange(np.prod(shape), dtype=np.float32).reshape(shape)


@pytest.mark.parametrize(
    "given, is_adopted",
    [
        (ramp(4, 5), True),
        (ramp(3, 4, 5), True),
        (ramp(8, 10)[::2, ::2], False),
        (ramp(4, 5)[::-1], False),
        (ramp(4, 5).astype(">f4"), False),
        (ramp(4, 5).astype(np.uint16), False),
        (ramp(4, 5).tolist(), False),
    ],
)
def test_takes_arrays_in_place_where_it_can(given, is_adopted):
    image = corvane.Image(given)
    view = np.asarray(image)
    assert np.array_equal(view, np.asarray(given)) and view.dtype == np.float32
    assert image.shape == np.shape(given) and len(image) == np.shape(given)[0] and image.ndim == np.ndim(given)
    assert is_adopted == (isinstance(given, np.ndarray) and np.shares_memory(view, given))


@pytest.mark.parametrize("given", [np.float32(3), ramp(5), ramp(2, 3, 4), ramp(0, 5), ramp(1, 1, 2, 2)])
def test_refuses_other_shapes(given):
    with pytest.raises(corvane.ArgumentError, match="^samples: "):
        corvane.Image(given)


def test_samples_live_as_long_as_whoever_looks_at_them():
    array = ramp(4, 5)
    holders = sys.getrefcount(array)
    image = corvane.Image(array)
    assert sys.getrefcount(array) > holders
    view = np.asarray(image)
    del image
    gc.collect()
    assert view[3, 4] == 19
    del view
    gc.collect()
    assert sys.getrefcount(array) == holders

    made = np.asarray(corvane.invert(array))
    gc.collect()
    assert np.array_equal(made, array.max() - array)


def test_views_are_read_and_items_are_written():
    image = corvane.Image(ramp(4, 5))
    with pytest.raises(ValueError):
        np.asarray(image)[0, 0] = 1
    assert memoryview(image).readonly and memoryview(image).shape == (4, 5)
    other = image.copy()
    image[1:3, 0] = [70, 80]
    assert image[2, 0] == 80 and other[2, 0] == 10
    assert np.array_equal(np.from_dlpack(image), np.asarray(image))
    assert np.asarray(image, dtype=np.float64).dtype == np.float64
    assert not np.shares_memory(image.__array__(copy=True), image)
    fixed = ramp(4, 5)
    fixed.flags.writeable = False
    with pytest.raises(ValueError, match="read-only"):
        corvane.Image(fixed)[0, 0] = 1
    assert np.array_equal(image.rows(1, 3), np.asarray(image)[1:3])
    for first, end in [(-1, 2), (2, 2), (0, 5)]:
        with pytest.raises(corvane.ArgumentError, match="rows = "):
            image.rows(first, end)


def test_writing_while_an_operation_runs_raises():
    image = corvane.Image(np.random.default_rng(1).normal(1000, 5, (700, 800)).astype(np.float32))
    other = image.copy()
    refused = []

    def listen(stage, done, total):
        if not refused:
            with pytest.raises(BufferError, match="while an operation works on it"):
                image[0, 0] = 1
            assert corvane.stats(image)["max"][0] < 1100  # it may be read
            refused.append(stage)

    for work in (lambda: corvane.median(image, progress=listen), lambda: corvane.dark(other, file=image, progress=listen)):
        refused.clear()
        work()
        assert refused
    image[0, 0] = 1
    assert image[0, 0] == 1


def test_paged_images_give_parts():
    before = corvane.memory_budget()
    corvane.set_memory_budget(1 << 20)
    try:
        image = corvane.resize(ramp(300, 400), width=1200, height=900)
        assert image.is_paged and image.rows(898, 900).shape == (2, 1200)
        with pytest.raises(BufferError, match="rows"):
            np.asarray(image)
    finally:
        corvane.set_memory_budget(before)


def test_header_and_levels(tmp_path):
    image = corvane.Image(ramp(3, 4, 5))
    header = image.header
    values = {"EXPTIME": 60.5, "NCOMBINE": 12, "OBJECT": "M 31", "DONE": True, "A LONG KEYWORD": "yes", "NUMBERED": "12"}
    for keyword, value in values.items():
        header[keyword] = value
    header.add_history("made by hand")
    image.levels = [(0, 10), (1, 11), (2, 12)]
    corvane.write(tmp_path / "a.fits", image)
    again = corvane.read(tmp_path / "a.fits")
    for keyword, value in values.items():
        assert again.header[keyword] == value and type(again.header[keyword]) is type(value)
        assert keyword in again.header and keyword in list(again.header)
    assert again.header.history == ["made by hand"] and again.levels == [(0, 10), (1, 11), (2, 12)]
    assert again.header.get("NOTHING", 3) == 3
    with pytest.raises(KeyError):
        again.header["NOTHING"]
    del again.header["OBJECT"]
    assert "OBJECT" not in again.header
    with pytest.raises(corvane.ArgumentError, match="levels = 1"):
        image.levels = [(0, 1)]


def test_one_image_in_several_threads():
    image = corvane.Image(np.random.default_rng(2).normal(0, 1, (300, 500)).astype(np.float32))
    expected = np.asarray(corvane.gaussian(image, sigma=2))
    made = [None] * 6
    threads = [
        threading.Thread(target=lambda i=i: made.__setitem__(i, np.asarray(corvane.gaussian(image, sigma=2))))
        for i in range(len(made))
    ]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert all(np.array_equal(one, expected) for one in made)
