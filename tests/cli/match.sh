# Where an image lies in another one.
source "$(dirname "$0")/check.bash"

night=(--lights 2 --darks 0 --flats 0 --bias 0 --size 320x240)
"$MAKE_NIGHT" "${night[@]}" night >/dev/null && "$MAKE_NIGHT" "${night[@]}" --seed 2 other >/dev/null || fail 'make-night'
a=night/light_001.fits b=night/light_002.fits
check 0 '^$' apply "$a" -o cut.fits crop:rect=20:150:80:200
check 0 '^$' apply cut.fits -o flat.fits clip:min=0,max=1

check 0 '^x 20\.0, y 150\.0, correlation 1\.000, rms [0-9.e-]+$' match cut.fits "$a"
check 0 '"x": 20\.0,.*"y": 150\.0,.*"correlation": (1\.0|0\.9999).*"rms": ' match cut.fits "$a" --start 12,155 --range 24 --json
check 0 '^x 20\.[0-9], y (149|150)\.[0-9], correlation 0\.9' match cut.fits "$b"
check 0 '^x 0\.0, y 0\.0, correlation 1\.000' match "$a" "$a"

refuse 1 'cut.fits: is not in the image: .*a correlation of 0\.[0-9]+, and 0\.8 is needed' match cut.fits other/light_001.fits --least 0.8
refuse 1 'cut.fits: is not in the image' match cut.fits "$a" --start 200,10
refuse 1 'cut.fits: is not to be told apart in the image: .*; a larger cut-out' match cut.fits other/light_001.fits
refuse 2 '--range = 5: needs start' match cut.fits "$a" --range 5
refuse 1 'cut.fits: lies whole in the image nowhere in the range' match cut.fits "$a" --start 5000,0
refuse 1 'light_001.fits: is 320 x 240, larger than the image, which is 60 x 50' match "$a" cut.fits
refuse 1 'flat.fits: cannot be compared: it .*flat' match flat.fits "$a"
check 0 '^$' apply "$a" -o colour.fits to-color
refuse 1 'colour.fits: has 3 planes; the image has 1' match colour.fits "$a"
finish
