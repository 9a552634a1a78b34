# A stack that several processes make has the bytes that one makes.
source "$(dirname "$0")/check.bash"

make_night() {
    "$MAKE_NIGHT" --size 240x170 --drift 5 --turn 0.3 --darks 2 --flats 2 --bias 0 --cosmics 15 "$@" >/dev/null ||
        fail "make-night $*"
}
make_night --lights 6 --stars 150 --hot-pixels 0.002 night
make_night --lights 3 --bayer GRBG --stars 500 mosaic
lights=(night/light*)
calibration=(--dark night/dark* --flat night/flat*)

# by_bands BANDS OPTIONS FILE...: the stack of so many bands, which are joined last first, is that of one process.
by_bands() {
    local bands=$1 words files=() i
    read -ra words <<<"$2"
    check 0 '^$' stack -q "${words[@]}" -o whole.fits "${@:3}"
    check 0 '^$' stack -q "${words[@]}" --save-plan plan.json "${@:3}"
    for ((i = bands; i > 0; --i)); do
        check 0 '^$' stack -q --plan plan.json --band "$i/$bands" -o "band_$i.fits"
        files+=("band_$i.fits")
    done
    check 0 '^$' stack -q --plan plan.json --join "${files[@]}" -o joined.fits ${maps-}
    cmp -s whole.fits joined.fits || fail "stack $2: $bands bands make another stack"
    rm band_*.fits
}
for bands in 1 3 8; do
    maps=--with-maps by_bands $bands '--with-maps --cosmetic --cosmic' "${calibration[@]}" -- "${lights[@]}"
done
by_bands 3 '--combine median --reject sigma --low 2 --high 2 --normalise local --canvas union' -- "${lights[@]}"
by_bands 3 '--transform distortion --reject linear-fit --weight noise --reject-stars 90 --scale' -- "${lights[@]}"
by_bands 2 '--method clipped-mean --coverage all --align shift --size 24 --search 40 --normalise scale' \
    -- "${lights[@]}"
by_bands 4 '--reject esd --pedestal 20 --interpolate bilinear --onto night/light_002.fits' -- "${lights[@]}"
by_bands 2 '--align none --reject minmax --combine sum' -- mosaic/light*
by_bands 3 '--debayer bilinear --reject mad' -- mosaic/light*
for scale in 0.7 1 2; do
    maps=--with-maps by_bands 3 "--with-maps --drizzle $scale --drop 0.8 --canvas union" -- "${lights[@]}"
done
by_bands 2 '--drizzle 1.5 --drop-shape point --reject mad' -- mosaic/light*
by_bands 2 '--follow 90.5,60@night/light_001.fits 80,64.25@night/light_004.fits --canvas common' -- "${lights[@]}"

# The report of a stack is that of one process, but for the times that it took.
check 0 '^$' stack -q "${lights[@]}" -o whole.fits --report whole.html
check 0 'plan: plan.json$' stack "${lights[@]}" --save-plan plan.json --report wanted.html
for band in 1 2 3; do
    check 0 "band: band_$band.fits" stack --plan plan.json --band $band/3 -o band_$band.fits
done
check 0 'noise of the sky.*stack: joined.fits' stack --plan plan.json --join band_[123].fits -o joined.fits \
    --report joined.html
times='s/[0-9.]* s//g'
[[ $(sed "$times" whole.html) == "$(sed "$times" joined.html)" ]] || fail 'the report tells otherwise'

# What cannot be done is said, and nothing is written.
"$CORVANE" stack -q "${lights[@]}" --save-plan other.json --combine median
refuse 1 'rows 56 to 112 of the stack are in none' stack --plan plan.json --join band_1.fits band_3.fits -o o.fits
refuse 1 'band_1.fits: rows 0 to 55 .* in another band, too' \
    stack --plan plan.json --join band_1.fits band_?.fits -o o.fits
refuse 1 'band_1.fits: is a band of another plan' stack --plan other.json --join band_?.fits -o o.fits
refuse 1 'night/light_001.fits: is no band' stack --plan plan.json --join night/light_001.fits -o o.fits
refuse 2 'must be asked for with --save-plan' stack --plan plan.json --join band_?.fits -o o.fits --coverage-map c.fits
refuse 2 'take no other options' stack --plan plan.json --band 1/3 -o o.fits --reject sigma
refuse 2 'takes --band or --join' stack --plan plan.json -o o.fits
refuse 2 'takes a plan, and after it the bands' stack --plan plan.json --join -o o.fits
refuse 2 'must be NUMBER/OF' stack --plan plan.json --band 4/3 -o o.fits
refuse 2 'at most 170, the rows' stack --plan plan.json --band 1/171 -o o.fits
refuse 2 'made in one piece' stack "${lights[@]}" --registered placed --save-plan o.json
"$CORVANE" stack -q "${lights[@]}" --save-plan small.json --drizzle 0.5
refuse 2 'no row of the stack' stack --plan small.json --band 2/170 -o o.fits
refuse 2 'light_001.fits: is both input and output' stack --plan plan.json --band 1/3 -o night/light_001.fits
for damage in 's/"weight":[^,}]*/"weight":-1/' 's/"used":true/"used":3/' \
    's/"reference_light":[0-9]*/"reference_light":99/' 's/"corvane":"[^"]*"/"corvane":"0.0.1"/' \
    's/"file":"night.light_003/"file":"light_004/' '$d'; do
    sed "$damage" plan.json >damaged.json
    refuse 1 'damaged.json: |light_003.fits: what was measured is of another' \
        stack --plan damaged.json --band 1/3 -o o.fits
done
finish
