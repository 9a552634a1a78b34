"""A night in ten lines: python night.py FOLDER STACK.fits"""

import sys

import corvane

folder, out = sys.argv[1:]
night = corvane.stack(folder, progress=True)
for light in night.lights:
    print(f"{light['file']}: FWHM {light['fwhm']:.2f} pixels, weight {light['weight']:.2f} {light['reason']}")
light, ideal, depth = night.depth
print(f"noise of the sky: {light:.2f} in a light, {depth:.2f} in the stack, at best {ideal:.2f}")
corvane.write(out, night.image)
