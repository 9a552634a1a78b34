# Two images made one, as they lie and aligned by stars.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 2 --darks 0 --flats 0 --bias 0 --size 320x240 --seed 5 --drift 3 --drift-y -2 night >/dev/null ||
    fail 'make-night'
a=night/light_001.fits b=night/light_002.fits

check 0 '^$' composite "$a" "$a" -o twice.fits --mode sum
check 0 '^$' composite twice.fits "$a" -o once.fits --mode difference
check 0 '^$' composite once.fits "$a" -o none.fits --mode absdiff
check 0 'min 0, max 0, mean 0' info none.fits
# What lies beyond the overlay is undefined.
check 0 '^$' composite "$a" "$b" -o moved.fits --mode mean --dx -10 --dy 0 --ratio 1
check 0 '2400 not finite' info moved.fits
check 0 '^$' composite "$a" "$b" -o display.png --mode max --display --rect 10:10:20:20 --bits 16
check 0 '^$' composite "$a" "$b" -o dark.fits --mode desaturate --ratio 2 --radius 1
check 0 '^aligned by 1 star: dx .*, dy .*, angle 0.0000$' \
    composite "$a" "$b" -o aligned.fits --mode mean --align points --points 100,100 --overlay-points 103,98
check 0 '^$' composite -q "$a" "$b" -o quiet.fits --mode mean --points 100,100 --overlay-points 103,98
check 0 '^$' apply "$a" -o colour.fits to-color
check 0 '^$' composite colour.fits "$a" -o colour.fits --overwrite --mode difference --clamp

refuse 2 '--mode = add: must be sum, mean' composite "$a" "$b" -o out.fits --mode add
refuse 2 '--angle = nan: is not a finite number' composite "$a" "$b" -o out.fits --mode sum --angle nan
refuse 2 '--ratio: must be given' composite "$a" "$b" -o out.fits --mode desaturate
refuse 2 '--align = points: needs points' composite "$a" "$b" -o out.fits --mode sum --align points
refuse 2 '--align = none: points are given' composite "$a" "$b" -o out.fits --mode sum --align none --points 1,2
refuse 2 '--overlay-points: must name the same stars' composite "$a" "$b" -o out.fits --mode sum --points 1,2
refuse 1 "$a: --rect = 0:0:999:9: must lie within" composite "$a" "$b" -o out.fits --mode sum --rect 0:0:999:9
refuse 1 "$b: the star at 900,9" composite "$a" "$b" -o out.fits --mode sum --points 9,9 --overlay-points 900,9
refuse 1 'has 3 planes;' composite "$a" colour.fits -o out.fits --mode desaturate --ratio 1
refuse 1 'none/out.fits' composite "$a" "$b" -o none/out.fits --mode sum
finish
