# Ctrl-C during a stack.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 1 --darks 0 --flats 0 --bias 0 --size 1000x800 night >/dev/null || fail 'make-night'
tee light{1..40}.fits <night/light_001.fits >/dev/null
# The first stage has been told of: the others take long enough for a signal to arrive.
interrupt . stack -v light*.fits -o out.fits --preview out.png --align shift --method clipped-median
# And during the second of many images: the first one stays.
printf 'gaussian:sigma=5\n%.0s' {1..40} >long.recipe
mkdir results
echo older | tee results/light1.fits results/light2.fits >/dev/null
interrupt '\[2/3\]' apply -v light1.fits light2.fits light3.fits -o results --recipe long.recipe
[[ $("$CORVANE" recipes results/light1.fits | wc -l) -eq 40 && $(<results/light2.fits) == older ]] || fail 'many images'
finish
