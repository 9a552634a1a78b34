"""Images and tables of astropy and of this package, made of each other."""

from __future__ import annotations

from typing import Any, Optional

import numpy as np
from astropy import units
from astropy.io import fits
from astropy.nddata import CCDData, NDData
from astropy.table import QTable, Table
from astropy.wcs import WCS

from ._core import Image
from .errors import refusal

_UNITS = {
    "x": "pix",
    "y": "pix",
    "fwhm": "pix",
    "dx": "pix",
    "dy": "pix",
    "residual": "pix",
    "angle": "deg",
}


def from_nddata(data: NDData) -> Image:
    """Take over a CCDData or NDData.

    Parameters
    ----------
    data : astropy.nddata.NDData
        Samples of shape (rows, columns) or (planes, rows, columns). Unit, header and coordinates go along; samples that
        are masked become NaN. The samples themselves are shared where they are 32-bit floats and nothing is masked.

    Returns
    -------
    Image
        The image.

    Raises
    ------
    ArgumentError
        It has an uncertainty, flags or a point-spread function, which an image cannot hold.
    """
    for name in ("uncertainty", "flags", "psf"):
        if getattr(data, name, None) is not None:
            raise refusal(name, None, "an image holds none; set it to None before")
    return image_of(data)


def image_of(data: NDData, with_mask: bool = True) -> Image:
    """What an image can hold of a CCDData or NDData; samples that are masked become NaN, unless they are to stay."""
    samples = np.asarray(data.data)
    if with_mask and data.mask is not None and np.any(data.mask):
        samples = np.where(data.mask, np.float32(np.nan), samples)
    image = Image(samples)
    for card in _header_of(data).cards:
        text = str(card)
        for begin in range(0, len(text), 80):
            image.header.add_card(text[begin : begin + 80])
    return image


def _header_of(data: NDData) -> fits.Header:
    header = data.meta.copy() if isinstance(data.meta, fits.Header) else fits.Header(dict(data.meta))
    header.strip()
    if data.wcs is not None:
        header.update(data.wcs.to_header(relax=True))
    if data.unit is not None:
        header["BUNIT"] = data.unit.to_string()
    return header


def to_ccddata(image: Image, unit: Any = None) -> CCDData:
    """Make a CCDData of an image.

    Parameters
    ----------
    image : Image
        The image. Its samples are copied.
    unit : astropy unit or str, optional
        Unit of the samples. Without: what BUNIT of the header says, else adu.

    Returns
    -------
    astropy.nddata.CCDData
        With the image's header and coordinates; samples that are not known are masked.
    """
    header = fits.Header.fromstring("".join(image.header.cards))
    samples = np.array(image)
    mask = ~np.isfinite(samples)
    if image.blank is not None:
        mask |= np.trunc(samples) == image.blank
    wcs = WCS(header, naxis=2)
    return CCDData(
        samples,
        unit=unit_of(unit if unit is not None else header.get("BUNIT")),
        mask=mask if mask.any() else None,
        meta=header,
        wcs=wcs if wcs.has_celestial else None,
    )


def unit_of(given: Any) -> units.UnitBase:
    """The unit of that name; adu where none is known."""
    if given is None or str(given).strip().lower() in ("", "adu", "counts", "dn"):
        return units.adu
    return units.Unit(given)


def to_table(rows: np.ndarray, units_too: bool = False) -> Table:
    """Make a table of what a function measured, such as `find_stars`.

    Parameters
    ----------
    rows : numpy.ndarray
        A structured array.
    units_too : bool, default False
        Make a QTable, whose places and widths are quantities.

    Returns
    -------
    astropy.table.Table
        A column for each field.
    """
    table: Table = QTable(rows) if units_too else Table(rows)
    for name in table.colnames:
        unit: Optional[str] = _UNITS.get(name)
        if units_too and unit is not None:
            table[name] = table[name] * units.Unit(unit)
    return table
