# Two images on one canvas.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 2 --darks 0 --flats 0 --bias 0 --size 320x240 night >/dev/null || fail 'make-night'
a=night/light_001.fits b=night/light_002.fits

check 0 '^$' mosaic "$a" "$b" -o side.fits --dx 300 --dy -20.5
check 0 'size +620 x 261, 1 plane.*min 0,' info side.fits
strings side.fits | grep -q "HISTORY corvane mosaic $a $b --dx 300" || fail 'no HISTORY line'
check 0 '^$' mosaic "$a" "$b" -o turned.fits --angle 90 --mode under --display --background 128
check 0 'size +320 x 320' info turned.fits
check 0 '^$' mosaic "$a" "$b" -o key.fits --mode key --key 800 --average
check 0 '^aligned by 1 star' mosaic "$a" "$b" -o aligned.fits --points 100,100 --second-points 100,100 --box 31

refuse 2 '--mode = beside: must be over, key, lighter, darker or under' mosaic "$a" "$b" -o out.fits --mode beside
refuse 2 '--key = 5: belongs to mode = key' mosaic "$a" "$b" -o out.fits --key 5
refuse 2 '--key = 1,2: must be N or R,G,B' mosaic "$a" "$b" -o out.fits --mode key --key 1,2
refuse 2 '--background = 7: needs display' mosaic "$a" "$b" -o out.fits --background 7
refuse 2 '--background = 256: must be 0 to 255' mosaic "$a" "$b" -o out.fits --background 256 --display
refuse 1 "$b: lies so far away .* 100320 x 240 pixels" mosaic "$a" "$b" -o out.fits --dx 100000
finish
