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
