# Measuring and finding stars.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 1 --darks 0 --flats 0 --bias 0 --size 320x240 --seed 3 --stars 60 night >/dev/null || fail make-night
a=night/light_001.fits

check 0 '^  star .* used.*FWHM mean [0-9.]+, median [0-9.]+ pixels' stars "$a" --map map.png --plot plot.svg
check 0 '320 x 240, 3 planes.*PNG, 8 bits' info map.png
grep -q '<svg.*' plot.svg && grep -q 'median FWHM' plot.svg && tail -n 1 plot.svg | grep -q '^</svg>$' || fail 'no plot'
cp "$a" $'caf\xe9.fits'
check 0 'mean' stars $'caf\xe9.fits' --plot odd.svg
iconv -f UTF-8 -t UTF-8 odd.svg >/dev/null || fail 'a plot that is no UTF-8'
check 0 '"usable": [0-9]+,.*"x": [0-9.]+,.*"flags": \[' find-stars "$a" --json --map found.png
check 0 '^star,x,y,peak,sky,noise,flux,fwhm,elongation,flags'$'\n''1,[0-9]' find-stars "$a" --csv --limit 1
check 0 'saturated' find-stars "$a" --saturation 1

# The brightest star that is fit, by its place.
IFS=, read -r _ x y _ < <("$CORVANE" find-stars "$a" --csv | grep ',$' | head -n 1)
check 0 ' 3 stars, 1 used.*warning: star at 1,1: at the edge' stars "$a" --at "$x,$y" 1,1 --at "$x,$y" --sigmas 20
check 0 '"fault": "the same as star 1"' stars "$a" --json --at "$x,$y" "$x,$y"
check 0 'at the edge of the image$' stars -q --csv "$a" --at "$x,$y" 1,1
check 0 '^$' apply "$a" -o colour.fits to-color
check 0 'colour.fits, plane 1: ' stars colour.fits
refuse 1 'night/light_001.fits: no star could be measured; star at 9,9: not 900 ' stars "$a" --at 9,9 --sigmas 900
refuse 1 '--at = 320,5: must lie within the image, 0,0 to 319,239' stars "$a" --at 320,5
refuse 2 '--at = 5: must be X,Y' stars "$a" --at 5
refuse 2 '--sigmas = 0.5: must be 1 to 1000' stars "$a" --sigmas 0.5
refuse 2 '--limit = -1: must be 1 to 1e\+06' find-stars "$a" --limit -1
refuse 2 '--json excludes --csv' stars "$a" --csv --json
refuse 1 '--plane = 2: must be 0, since the image has 1 plane' find-stars "$a" --plane 2
refuse 2 'plot.png: is no name for a plot' stars "$a" --plot plot.png
refuse 2 'is both input and output' stars map.png --map map.png
check 0 '^  column .* beta .*'$'\n'' *0 +0 +[0-9]+ +[0-9.]+' psf "$a" -o psf.fits
check 0 'psf.fits.*1 plane' info psf.fits
check 0 '"column": 1,.*"row": 1,.*"beta": null' psf "$a" -q -o zones.fits --zones 2 --size 9 --model gaussian --json
check 0 '18 x 18' info zones.fits
check 0 'gain' apply -v "$a" -o sharp.fits lucy:psf=psf.fits,iterations=2
refuse 2 '--model = round: must be gaussian, moffat or stars' psf "$a" -o x.fits --model round
check 0 '^$' apply "$a" -o flat.fits multiply:value=0
refuse 1 'flat.fits: has no star to measure' psf flat.fits -o x.fits
refuse 1 'flat.fits: no star rises 5 standard deviations above the sky' find-stars flat.fits --map none.png
finish
