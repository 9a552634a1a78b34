"""Calibrating in astropy's world: python ccddata.py LIGHT.fits DARK.fits FLAT.fits OUT.fits"""

import sys

import corvane
import corvane.astropy
from astropy.nddata import CCDData

light, dark, flat, out = sys.argv[1:]
data = CCDData.read(light, unit="adu")
image = corvane.astropy.from_nddata(data)
image = corvane.dark(image, file=dark)
image = corvane.flat(image, file=flat)
made = corvane.astropy.to_ccddata(image)
print(f"median {data.data.mean():.1f} before, {made.data.mean():.1f} {made.unit} after")
made.write(out, overwrite=True)
