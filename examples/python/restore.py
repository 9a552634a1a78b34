"""Sharper stars: python restore.py IN.fits OUT.fits"""

import sys

import corvane
import numpy as np

source, out = sys.argv[1:]
blurred = corvane.read(source)
restored = corvane.lucy(blurred, fwhm="auto", iterations=15, progress=True)
for what, image in [("before", blurred), ("after", restored)]:
    stars = corvane.find_stars(image, sigmas=20)
    print(f"FWHM {what}: {np.median(stars['fwhm']):.2f} pixels")
corvane.write(out, restored)
