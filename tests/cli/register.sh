# How lights lie on each other: limits, reports, and stacks that HISTORY makes again.
source "$(dirname "$0")/check.bash"

make_night() {
    "$MAKE_NIGHT" --darks 2 --flats 1 --bias 0 --size 400x300 --stars 200 --drift 9 "$@" >/dev/null || fail "make-night $*"
}
make_night --lights 5 --turn 0.2 night
make_night --lights 3 --bayer GRBG mosaic
lights=(night/light*)
calibration=(--dark night/dark* --flat night/flat*)

# A night of the same stars, but for what the option changes, has one light that lies beyond the limit.
for limit in 'fwhm --fwhm 5 width of its stars' 'stars --read-noise 60 number of its stars' 'background --sky 9 background'; do
    read -r name option value what <<<"$limit"
    make_night --lights 5 --turn 0.2 "$option" "$value" "bad_$name"
    check 0 "6 lights, 5 used, 1 rejected.*bad_$name/light_001.fits +rejected: (the|its) $what is .* sigmas off the median" \
        register "${lights[@]}" "bad_$name/light_001.fits" "--reject-$name" 5
done

make_night --lights 1 --seed 2 other
other='other/<b> & "c".fits'
mv other/light_001.fits "$other"
check 0 '5 used, 1 rejected.*night/light_002.fits .*\(reference\)' \
    register --reference night/light_002.fits --report r.html -- "${lights[@]}" "$other"
[[ $(grep -c '^<tr.*<td' r.html) -eq 6 && $(grep -c 'other/&lt;b&gt; &amp; "c".fits' r.html) -gt 1 ]] || fail 'r.html'
for tag in html head body svg g title text table tr td th; do
    [[ $(grep -oE "<${tag}[ >]" r.html | wc -l) -eq $(grep -o "</$tag>" r.html | wc -l) ]] || fail "r.html: <$tag> stays open"
done
check 0 'rejected: .*noise of the sky: .* in the stack' stack "${lights[@]}" "$other" -o s.fits --with-maps --report s.html
[[ $(grep -c '<img title="night/light_00' s.html) -eq 5 && $(grep -c 'class="out" title="other' s.html) -eq 1 &&
    $(grep -c 'src="data:image/png;base64,iVBORw0KGgo' s.html) -eq 7 && $(grep -o '<img ' s.html | wc -l) -eq 8 ]] ||
    fail 's.html shows other lights, or not where values were rejected'
check 0 'HDU +3 REJECTED: 400 x 300 x 3' info 's.fits[NOISE]'

# Maps lie on the sky as the stack does, what bends its coordinates included.
cards=
for card in "CTYPE1  = 'RA---TAN-SIP'" "CTYPE2  = 'DEC--TAN-SIP'" 'CRPIX1  = 200.0' 'CRVAL1  = 10.0' 'CD1_1   = -0.001' \
            'A_ORDER = 2' 'A_2_0   = 1e-6'; do
    cards+=$(printf '%-80s|' "$card")
done
mkdir sky
for light in night/light_00[12].fits; do
    LC_ALL=C sed "1s/END \{77\} \{560\}/${cards//|/}$(printf '%-80s' END)/" "$light" >"sky/${light##*/}"
done
check 0 '' stack sky/* -o sky.fits --with-maps
check 0 '' apply 'sky.fits[NOISE]' -o noise.fits clip:min=0,max=9
grep -aq 'A_2_0   = *1e-6' noise.fits || fail 'a map lies elsewhere on the sky than its stack'

said=$("$CORVANE" stack "${lights[@]}" "$other" -o s.fits)
[[ $(grep -c 'rejected: ' <<<"$said") -eq 1 ]] || fail "a light that was left out is named other than once: $said"
check 0 '^$' register -q "${lights[@]}" --report r.json
[[ $(grep -c '"file": "night/light_00[1-5].fits"' r.json) -eq 5 ]] || fail 'r.json'
check 1 'rejected: ' register "$other" "${lights[1]}" --report r.csv
[[ $(wc -l <r.csv) -eq 3 && $(<r.csv) == *$'\n"other/<b> & ""c"".fits",'* ]] || fail "r.csv: $(<r.csv)"
check 0 '1 light, 1 used' register "${lights[0]}"
refuse 1 'no other light can be stacked with it: other/' stack "${lights[0]}" "$other" --reference "${lights[0]}" -o out.fits --report out.csv

# again OPTIONS FILE...: what HISTORY says of a stack makes the same one.
again() {
    local words line
    read -ra words <<<"$1"
    check 0 '^$' stack -q "${words[@]}" -o first.fits "${@:2}"
    line=$(LC_ALL=C fold -b -w 80 first.fits | sed -n 's/^HISTORY \(.*[^ ]\) *$/\1/p' | sed ':a; /&$/ { N; s/&\n//; ba }' | sed 1q)
    read -ra words <<<"$line"
    check 0 '^$' "${words[@]}" -q -o second.fits "${@:2}"
    cmp -s first.fits second.fits || fail "stack $1: '$line' makes another stack"
}
again '--method clipped-mean --weight fwhm --normalise offset --reject-stars 90 --coverage all --cosmetic --pedestal 20' \
    "${calibration[@]}" -- "${lights[@]}"
again '--scale --reject-fwhm 90 --reject-background 90.5' "${calibration[@]}" -- "${lights[@]}"
again '--align shift --size 24 --search 40 --method clipped-mean --weight noise' -- "${lights[@]}"
again '--align none --normalise scale --reference night/light_003.fits' -- "${lights[@]}"
again '--debayer bilinear' -- mosaic/light*
again '--transform distortion --normalise local --canvas union --onto night/light_002.fits' "${calibration[@]}" -- "${lights[@]}"
follow=(--follow 150.5,120@night/light_001.fits 120,140.25@night/light_004.fits)
again "--canvas common ${follow[*]}" -- "${lights[@]}"
check 0 'stars: o_stars.fits.registered: placed' stack "${lights[@]}" -o o.fits "${follow[@]}" --both --registered placed
[[ -s o_stars.fits && $(ls placed) == *light_005_registered.fits ]] || fail "no stars or lights: $(ls placed)"
refuse 2 'placed/light_001_registered.fits: is both input and output' \
    stack night/light_001.fits placed/light_001_registered.fits -o o.fits --registered placed
refuse 2 'both = alone|--both requires --follow' stack "${lights[@]}" -o o.fits --both
again '--align none' -- mosaic/light*
finish
