"""What astropy's users bring and take along."""

import corvane
import numpy as np
import pytest
from astropy import units
from astropy.coordinates import SkyCoord
from astropy.nddata import CCDData, StdDevUncertainty
from astropy.wcs import WCS

import corvane.astropy as bridge


def sky_data():
    wcs = WCS(naxis=2)
    wcs.wcs.ctype = ["RA---TAN", "DEC--TAN"]
    wcs.wcs.crval, wcs.wcs.crpix = [10.68, 41.27], [20.5, 15.5]
    wcs.wcs.pc, wcs.wcs.cdelt = [[0.8, -0.6], [0.6, 0.8]], [-2e-4, 2e-4]
    data = np.random.default_rng(3).normal(100, 3, (40, 50)).astype(np.float32)
    return CCDData(data, unit="adu", wcs=wcs, meta={"OBJECT": "M 31", "EXPTIME": 60.0})


def test_data_go_both_ways():
    data = sky_data()
    image = bridge.from_nddata(data)
    assert np.shares_memory(np.asarray(image), data.data)
    assert image.header["OBJECT"] == "M 31" and image.header["BUNIT"] == "adu"
    again = bridge.to_ccddata(image)
    assert np.array_equal(again.data, data.data) and again.unit == units.adu and again.mask is None
    assert again.header["EXPTIME"] == 60.0
    here, there = (ccd.wcs.pixel_to_world(7, 31) for ccd in (data, again))
    assert here.separation(there) < 1e-9 * units.arcsec


def test_masked_samples_are_unknown():
    data = sky_data()
    data.mask = np.zeros(data.shape, bool)
    data.mask[3, 4] = True
    image = bridge.from_nddata(data)
    assert np.isnan(image[3, 4]) and np.isfinite(image[3, 5]) and np.isfinite(data.data[3, 4])
    assert np.array_equal(bridge.to_ccddata(image).mask, data.mask)
    data.uncertainty = StdDevUncertainty(np.ones(data.shape))
    with pytest.raises(corvane.ArgumentError, match="uncertainty"):
        bridge.from_nddata(data)


@pytest.mark.parametrize(
    "change, place",
    [
        (lambda image: corvane.crop(image, rect=(5, 3, 45, 38)), lambda x, y: (x - 5, y - 3)),
        (lambda image: corvane.flip(image, direction="horizontal"), lambda x, y: (49 - x, y)),
        (lambda image: corvane.bin(image, x=2), lambda x, y: ((x - 0.5) / 2, (y - 0.5) / 2)),
    ],
)
def test_coordinates_follow_the_pixels(change, place):
    data = sky_data()
    image = bridge.from_nddata(data)
    truth = SkyCoord(data.wcs.pixel_to_world(12, 20))
    moved = bridge.to_ccddata(change(image)).wcs.pixel_to_world(*place(12, 20))
    assert truth.separation(moved) < 1e-6 * units.arcsec
    image.header["CRVAL1"] = 11.0
    assert change(image).header["CRVAL1"] == 11.0


def test_tables():
    stars = np.array([(1, 3.5, 4.5, 2.4)], dtype=[("star", "i8"), ("x", "f8"), ("y", "f8"), ("fwhm", "f8")])
    assert bridge.to_table(stars)["fwhm"][0] == 2.4
    assert bridge.to_table(stars, units_too=True)["x"].unit == units.pix


def sky_frames(count):
    """Frames of one sky, with hits and masked samples."""
    rng = np.random.default_rng(9)
    frames = rng.normal(200, 4, (count, 30, 40)).astype(np.float32)
    frames[rng.random(frames.shape) < 0.05] += 300
    masks = rng.random(frames.shape) < 0.1
    masks[:, 5, 6] = True
    meta = {"OBJECT": "M 31"}
    return [CCDData(frame, mask=mask, unit="adu", meta=meta) for frame, mask in zip(frames, masks)]


def values_of(frames, factors):
    """The values that are not masked, in double precision."""
    return np.ma.stack([np.ma.array(f.data.astype(float) * k, mask=f.mask) for f, k in zip(frames, factors)])


def clipped(values, **_):
    off = np.abs(values - np.ma.median(values, axis=0))
    return np.ma.masked_where(off > 2 * np.ma.std(values, axis=0, ddof=1), values)


def without_ends(values, **_):
    values = np.ma.sort(values, axis=0)
    count = values.count(axis=0)
    place = np.arange(len(values))[:, None, None]
    return np.ma.masked_where((place < 1) | (place >= count - 2), values)


def within(values, factors):
    return np.ma.masked_where(values / np.reshape(factors, (-1, 1, 1)) > 450, values)


@pytest.mark.parametrize(
    "options, keep",
    [
        ({}, lambda values, **_: values),
        ({"sigma_clip": True, "sigma_clip_low_thresh": 2, "sigma_clip_high_thresh": 2}, clipped),
        ({"clip_extrema": True, "nlow": 1, "nhigh": 2}, without_ends),
        ({"minmax_clip": True, "minmax_clip_max": 450}, within),
    ],
)
@pytest.mark.parametrize("method", ["average", "median", "sum"])
def test_combine_is_what_its_words_say(options, keep, method):
    frames = sky_frames(11)
    factors = 1 + np.arange(11) / 10
    made = bridge.combine(frames, method=method, scale=factors, **options)
    values = keep(values_of(frames, factors), factors=factors)
    kept = np.ma.sort(values, axis=0)
    count = kept.count(axis=0)
    upper = np.take_along_axis(kept.data, count[None] // 2, axis=0)[0]
    expected = {"average": values.mean(axis=0), "sum": values.sum(axis=0), "median": np.ma.array(upper, mask=count == 0)}
    assert np.array_equal(made.mask, np.ma.getmaskarray(expected[method])) and made.mask[5, 6]
    assert np.allclose(made.data[~made.mask], expected[method][~made.mask], rtol=2e-7)
    assert made.header["NCOMBINE"] == 11 and made.header["OBJECT"] == "M 31" and made.unit == units.adu
    if method == "average":
        error = values.std(axis=0, ddof=1) / np.sqrt(count)
        several = count > 1
        assert np.allclose(made.uncertainty.array[several], error[several], rtol=1e-5)


def test_combine_takes_files_and_writes_one(tmp_path):
    frames = sky_frames(4)
    for number, frame in enumerate(frames):
        frame.mask = None
        corvane.write(tmp_path / f"{number}.fits", frame.data)
    names = [tmp_path / f"{number}.fits" for number in range(4)]
    weights = [1, 2, 0, 0.5]
    made = bridge.combine(",".join(map(str, names)), tmp_path / "out.fits", weights=weights, unit="electron")
    expected = np.average([frame.data.astype(float) for frame in frames], axis=0, weights=weights)
    assert np.allclose(made.data, expected, rtol=1e-6) and made.unit == units.electron
    again = CCDData.read(tmp_path / "out.fits")
    assert np.array_equal(again.data, made.data) and np.array_equal(again.uncertainty.array, made.uncertainty.array)
    with pytest.raises(corvane.FileError, match="exists"):
        bridge.combine(names, tmp_path / "out.fits")
    bridge.combine(names, tmp_path / "out.fits", scale=lambda a: 1 / np.ma.median(a), overwrite_output=True)
    assert abs(CCDData.read(tmp_path / "out.fits").data.mean() - 1) < 0.2
    assert len(list(tmp_path.iterdir())) == 5


@pytest.mark.parametrize(
    "options, message",
    [
        ({"method": "mode"}, "method = mode: must be average, median or sum"),
        ({"weights": [1, 2]}, "weights: must be a number for each of 3 frames"),
        ({"weights": [1, 1, -1]}, "weights"),
        ({"weights": [1, 1, 1], "method": "sum"}, "weights: must not be given with method = sum"),
        ({"scale": lambda a: np.nan}, "scale: must be a number"),
        ({"sigma_clip": True, "sigma_clip_func": np.ma.mean}, "sigma_clip_func = mean: must be median"),
        ({"sigma_clip": True, "clip_extrema": True}, "clip_extrema"),
        ({"sigma_clip": True, "sigma_clip_low_thresh": -1}, "sigma_clip_low_thresh = -1"),
        ({"dtype": float}, "dtype = float64"),
        ({"combine_uncertainty_function": np.std}, "combine_uncertainty_function"),
        ({"img_list": []}, "img_list: has no frame"),
        ({"img_list": [np.zeros((3, 4)), np.zeros((4, 3))]}, "frame 2 has the shape"),
        ({"img_list": [CCDData(np.zeros((3, 4)), unit=u) for u in ("adu", "electron")]}, "frames have adu and electron"),
    ],
)
def test_combine_refuses_by_name(options, message):
    with pytest.raises(corvane.ArgumentError) as error:
        bridge.combine(**{"img_list": sky_frames(3), **options})
    assert message in str(error.value)


def star_field(dx=0.0, dy=0.0, turn=0.0):
    """Stars on a sky, moved, and turned about the middle."""
    rng = np.random.default_rng(21)
    x, y = rng.uniform(-140, 140, (2, 60))
    peaks = rng.uniform(300, 4000, 60)
    rows, columns = np.mgrid[:260, :300]
    image = np.random.default_rng(int(10 * turn) + 1).normal(100, 2, (260, 300))
    sine, cosine = np.sin(np.radians(turn)), np.cos(np.radians(turn))
    for across, down, peak in zip(cosine * x - sine * y + 150 + dx, sine * x + cosine * y + 130 + dy, peaks):
        image += peak * np.exp(-((columns - across) ** 2 + (rows - down) ** 2) / (2 * 1.7**2))
    return image.astype(np.float32)


def test_register_brings_stars_together():
    target, source = star_field(), star_field(12.3, -7.6, 25)
    aligned, footprint = bridge.register(source, target)
    inner = ~footprint & (np.hypot(*(np.mgrid[:260, :300] - np.array([130, 150])[:, None, None])) < 100)
    assert isinstance(aligned, np.ndarray) and np.array_equal(np.isnan(aligned), footprint)
    assert 0.02 < footprint.mean() < 0.3 and np.std((aligned - target)[inner]) < 8 < np.std((source - target)[inner])
    filled, _ = bridge.register(corvane.Image(source), target, fill_value=-5)
    assert np.all(filled.data[footprint] == -5) and np.array_equal(filled.mask, footprint)
    data = sky_data()
    data.data, data.header["OBJECT"] = target, "the target"
    moved = CCDData(source, unit="electron", mask=source > 2000, meta={"OBJECT": "the source"})
    for propagates in (False, True):
        made, hidden = bridge.register(moved, data, propagate_mask=propagates, max_control_points=40)
        place = np.unravel_index(np.argmax(target), target.shape)
        assert hidden[place] == propagates and np.array_equal(made.mask, hidden)
        assert made.unit == units.electron and made.header["OBJECT"] == "the source"
        assert made.wcs.pixel_to_world(7, 31).separation(data.wcs.pixel_to_world(7, 31)) < 1e-6 * units.arcsec
    colour, hidden = bridge.register(np.stack([source] * 3), target)
    assert np.array_equal(colour[2], aligned, equal_nan=True) and hidden.shape == target.shape


@pytest.mark.parametrize(
    "options, message",
    [
        ({"target": np.zeros((9, 2))}, "target: must be an image"),
        ({"min_area": 3}, "min_area = 3: must be 5"),
        ({"max_control_points": 2}, "max_control_points = 2"),
        ({"detection_sigma": 0}, "detection_sigma = 0"),
        ({"target": star_field()[::-1].copy()}, "source: cannot be placed on the target by its stars"),
    ],
)
def test_register_refuses_by_name(options, message):
    with pytest.raises(corvane.ArgumentError) as error:
        bridge.register(**{"source": star_field(5, 5, 10), "target": star_field(), **options})
    assert message in str(error.value)
