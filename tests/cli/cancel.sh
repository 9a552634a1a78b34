# Ctrl-C during a stack.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 1 --darks 0 --flats 0 --bias 0 --size 1000x800 night >/dev/null || fail 'make-night'
tee light{1..40}.fits <night/light_001.fits >/dev/null
# The first stage has been told of: the others take long enough for a signal to arrive.
interrupt . stack -v light*.fits -o out.fits --preview out.png --align shift --method clipped-median
finish
