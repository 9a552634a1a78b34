"""A colour picture of three stacks: python colour.py R.fits G.fits B.fits OUT.png"""

import sys

import corvane

red, green, blue = (corvane.read(name) for name in sys.argv[1:4])
colour = corvane.rgb(red, green, blue)
colour = corvane.neutral_sky(colour)
colour = corvane.autostretch(colour)
corvane.write(sys.argv[4], colour, bits=8, scale="levels")
