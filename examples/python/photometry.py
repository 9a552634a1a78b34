"""Brightness of a star over a night, by its neighbours: python photometry.py X Y LIGHT.fits ...

X and Y are where the star is in the first light [pixels].
"""

import sys

import corvane
import numpy as np

place = np.array(sys.argv[1:3], dtype=float)
lights = sys.argv[3:]


def nearest(stars, x, y):
    return stars[np.argmin(np.hypot(stars["x"] - x, stars["y"] - y))]


registration = corvane.register(lights, reference=lights[0])
first = corvane.find_stars(corvane.read(lights[0]))
target = nearest(first, *place)
others = first[(first["flags"] == "") & (first["star"] != target["star"])][:10]

for name, lies in zip(lights, registration.lights):
    image = corvane.read(name)
    stars = corvane.find_stars(image)
    flux = nearest(stars, target["x"] - lies["dx"], target["y"] - lies["dy"])["flux"]
    sums = sum(nearest(stars, star["x"] - lies["dx"], star["y"] - lies["dy"])["flux"] for star in others)
    magnitude = -2.5 * np.log10(flux / sums * others["flux"].sum() / target["flux"])
    print(f"{image.header.get('DATE-OBS')} {magnitude:+.3f}")
