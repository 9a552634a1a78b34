"""Images, tables and frames of astropy, to and from those of this package."""

from __future__ import annotations

from ._frames import combine, register
from ._nddata import from_nddata, to_ccddata, to_table

__all__ = ["combine", "from_nddata", "register", "to_ccddata", "to_table"]
