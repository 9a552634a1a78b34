# Colour images made of frames, and taken apart.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 3 --darks 0 --flats 0 --bias 0 --size 320x240 --drift 3 night >/dev/null || fail 'make-night'
r=night/light_001.fits g=night/light_002.fits b=night/light_003.fits

check 0 '^$' rgb "$r" "$g" "$b" -o rgb.fits --shift2 -0.9,0.3 --angle3 1 --outside 500
check 0 'plane 2 +min 500' info rgb.fits
strings rgb.fits | grep -q "HISTORY corvane rgb $r $g" || fail 'no HISTORY line'
check 0 "^$g: aligned by 1 star: dx -3.*$b: aligned by 1 star: dx -6" \
    rgb "$r" "$g" "$b" -o rgb.fits --align shift --at 160,127
check 0 '^$' split rgb.fits -o m.fits --component m
check 0 '1 plane.*filter +M' info m.fits
check 0 "note: balance: $g times (1|0.99).*$g: aligned by [0-9]{3} stars: dx -2.9" rgb "$r" "$g" "$b" -o stars.fits --balance stars
check 0 "$r: aligned by [0-9]{3} stars: dx 0.000" cmy "$r" "$r" "$r" -o cmy.fits
check 0 '^$' apply rgb.fits -o small.fits bin:x=2,y=2
check 0 '^$' apply "$g" -o cropped.fits crop:rect=9:9:200:200
check 0 '^$' lrgb "$r" small.fits -o lrgb.fits --scale 0.5
check 0 'small.fits: aligned by [0-9]+ stars: .*scale (0.5|0.499)' lrgb "$r" small.fits -o lrgb.fits
check 0 'light_003.fits: aligned by' palette hos "$r" "$g" "$b" -o hos.fits --balance sky
strings hos.fits | grep -q "HISTORY corvane palette hos $r" || fail 'no HISTORY line of a palette'
printf '1 0\n0 1\n.5 .5\n' >mix.txt
check 0 "^$g: aligned by" palette mix.txt "$r" "$g" -o mix.fits --balance none
check 0 "note: continuum: factor (1|0.99)[0-9.]* \+- 0.*by [0-9]+ stars.*aligned by" continuum "$r" "$g" -o line.fits
check 0 '^$' lrgb "$r" rgb.fits -o mean.fits --average -q --align points --points 160,127 --points2 160,127

check 0 '^$' composite "$r" "$r" -o nothing.fits --mode sum --dx 1000
rgb=(rgb "$r" "$g" "$b" -o out.fits)
refuse 2 '--align = star: must be stars, none, shift or points' "${rgb[@]}" --align star
refuse 2 '--at = 1,1: belongs to align = shift' "${rgb[@]}" --at 1,1
refuse 2 '--shift2 = 1: must be DX,DY' "${rgb[@]}" --shift2 1
refuse 2 '--shift2: is not a number' "${rgb[@]}" --shift2 1,2,
refuse 2 '--shift1 = 2e6: must be -1e.06 to 1e.06' "${rgb[@]}" --shift1 0,2e6
refuse 2 '--points2 = 1,1: belongs to align = points' "${rgb[@]}" --points2 1,1
refuse 2 '--points2: belongs to align = points, which needs it' "${rgb[@]}" --align points --points 1,1
refuse 1 "$r: --at = 1,250: must lie within the image, of 320 x 240" "${rgb[@]}" --align shift --at 1,250
refuse 1 "$r: shows no star within 4 pixels of 20,100" "${rgb[@]}" --align shift --at 20,100 --size 9
refuse 1 "$g: the star is not within range = 4" "${rgb[@]}" --align shift --at 160,127 --range 4
refuse 1 'nothing.fits: has no sample that is defined' rgb "$r" nothing.fits "$b" -o out.fits --align none
refuse 1 'nothing.fits: shows 0 stars.*; align = none takes frames as they lie' rgb "$r" nothing.fits "$b" -o out.fits
refuse 2 '--scale = 0.5: must be 1 with align = stars' lrgb "$r" rgb.fits -o out.fits --scale 0.5 --align stars
refuse 1 'sso: no such file, nor a palette: those are sho, hoo or hos' palette sso "$r" "$g" "$b" -o out.fits
refuse 1 "$r: is one of 2 images; the palette sho mixes 3" palette sho "$r" "$g" -o out.fits
refuse 1 'rgb.fits: must have 1 plane; it has 3' palette hoo "$r" rgb.fits -o out.fits
refuse 1 'cropped.fits: has another size' palette hoo "$r" cropped.fits -o out.fits --align none
refuse 1 'rgb.fits: must have 1 plane; it has 3' cmy "$r" rgb.fits "$b" -o out.fits
refuse 1 "$r: must have 3 planes; it has 1" lrgb "$r" "$r" -o out.fits
refuse 1 "$r: must have 3 planes; it has 1" split "$r" -o out.fits --component r
refuse 2 '--component = red: must be r, g, b, c, m or y' split rgb.fits -o out.fits --component red
refuse 2 '--scale = 0: must be 0.01 to 100' lrgb "$r" rgb.fits -o out.fits --scale 0
finish
