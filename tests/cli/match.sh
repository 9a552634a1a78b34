# Where an image lies in another one.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 2 --darks 0 --flats 0 --bias 0 --size 320x240 night >/dev/null || fail 'make-night'
a=night/light_001.fits b=night/light_002.fits

check 0 '^x 0\.0, y 0\.0, rms 0$' match "$a" "$a" --range 6
check 0 '"x": 0.0,.*"y": 0.0,.*"rms": 0.0' match "$a" "$a" --start 1,-1 --range 8 --json

refuse 2 '--start: must be X,Y' match "$a" "$b" --start 1
refuse 2 '--range = 5000: must be 0 to 1024' match "$a" "$b" --range 5000
refuse 1 "$a: overlaps the image nowhere in the range" match "$a" "$b" --start 5000,0
check 0 '^$' apply "$a" -o colour.fits to-color
refuse 1 'colour.fits: has 3 planes; the image has 1' match colour.fits "$a"
finish
