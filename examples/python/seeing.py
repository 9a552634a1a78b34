"""FWHM over a night, with a plot where matplotlib is there: python seeing.py OUT.png LIGHT.fits ..."""

import sys

import corvane

out, lights = sys.argv[1], sys.argv[2:]
rows = corvane.register(lights).lights
for row in rows:
    print(f"{row['file']} {row['fwhm']:.2f} pixels, {row['stars']} stars, sky {row['background']:.0f}")
try:
    from matplotlib import pyplot
except ImportError:
    sys.exit()
pyplot.plot(rows["fwhm"], "o-")
pyplot.xlabel("light")
pyplot.ylabel("FWHM [pixels]")
pyplot.savefig(out)
