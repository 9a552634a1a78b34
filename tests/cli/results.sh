# What the commands make, from a small night.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 4 --darks 2 --flats 2 --bias 2 --size 320x240 night >/dev/null || fail 'make-night'
lights=(night/light*)

check 0 '^$' apply "${lights[0]}" -o once.fits clip:min=500,max=1000 invert:rect=0:0:10:10
check 0 'max 1000,' info once.fits
mapfile -t steps < <(fold -w 80 once.fits | sed -n 's/^HISTORY corvane apply \([^ ]*\) *$/\1/p')
check 0 '^$' apply "${lights[0]}" -o again.fits "${steps[@]}"
cmp -s once.fits again.fits || fail 'the steps in HISTORY give another result'
check 0 '^$' apply again.fits -o again.fits --overwrite --bits 16 to-color
check 0 '320 x 240, 3 planes.*16 bits' info again.fits

for levels in auto file 500,700; do
    check 0 '^$' render "${lights[0]}" -o "$levels.png" --levels "$levels"
    check 0 '320 x 240, 1 plane.*PNG, 8 bits' info "$levels.png"
done
# A stretch shows more than levels; a stretched frame is shown as it is; other formats and sizes.
check 0 '^$' render "${lights[0]}" -o stretched.png
check 0 '^$' apply "${lights[0]}" -o stretched.fits autostretch:linked=no
check 0 '^$' render stretched.fits -o shown.png
cmp -s stretched.png shown.png || fail 'a stretched frame is shown otherwise than by the same stretch'
cmp -s auto.png stretched.png && fail '--stretch makes no difference'
grep -q sRGB stretched.png || fail 'a picture does not say that it is sRGB'
# Levels that no step has set are a camera program's.
sed 's/^\(.*\)HISTORY corvane apply/\1COMMENT corvane apply/' stretched.fits >camera.fits
check 0 '^$' render camera.fits -o guessed.png
check 0 '^$' render camera.fits -o levels.png --levels file
cmp -s levels.png shown.png || fail '--levels file makes no use of the levels'
cmp -s guessed.png shown.png && fail 'the levels of a camera program are trusted'
check 0 '^$' render stretched.fits -o deep.tif
check 0 '^$' render stretched.fits -o deep.png --bits 16
check 0 '320 x 240.*16 bits.*320 x 240.*16 bits' info deep.tif deep.png
for stretch in auto linear asinh; do
    check 0 '^$' render "${lights[0]}" -o "small.png" --stretch $stretch --size 100
    check 0 '100 x 75, 1 plane' info small.png
    check 0 '^$' render "${lights[0]}" -o "$stretch.jpg" --stretch $stretch --quality 80
    [[ $(head -c 3 $stretch.jpg | od -An -tx1) == ' ff d8 ff' ]] || fail "$stretch.jpg is no JPEG"
done
# Floats in integers: refused, or on the scale that is asked for. FITS gives them back.
check 0 '^$' apply once.fits -o unit.fits multiply:value=0.0001
refuse 1 'unit.tif: a TIFF of 16 bits holds counts .*--bits-scale levels' apply unit.fits -o unit.tif --bits 16 to-color
for scale in levels minmax unit; do
    check 0 '^$' apply unit.fits -o scaled.tif --bits 16 --scale $scale to-color
    check 0 '^$' apply unit.fits -o scaled.fits --bits 16 --scale $scale to-color
    check 0 '16 bits' info scaled.tif scaled.fits
done
refuse 1 'keep their values' stack once.fits again.fits -o out.fits --bits-scale unit --align none
cmp -s auto.png 500,700.png && fail '--levels makes no difference'

check 0 '4 lights, 4 used, 0 rejected.*shift .*stack: s.fits.*preview: s.png' \
    stack "${lights[@]}" -o s.fits --preview s.png --align shift --method clipped-mean \
    --dark night/dark* --bias night/bias* --flat night/flat*
check 0 '^$' stack -q -o plain.fits --align shift --method clipped-mean \
    --dark night/dark* --bias night/bias* --flat night/flat* -- "${lights[@]}"
cmp -s s.fits plain.fits || fail 'a preview changes the stack'
# A part of a change; the mask is noted with the step.
check 0 '^$' star-mask s.fits -o mask.fits --grow 2
check 0 '320 x 240, 1 plane.*levels +0 to 1' info mask.fits
check 0 '^$' apply s.fits -o masked.fits 'gaussian:sigma=2,mask=mask.fits,strength=0.8'
grep -aq 'HISTORY corvane apply gaussian:sigma=2,mask=mask.fits,strength=0.8' masked.fits || fail 'no note of a mask'
refuse 1 'none.fits: ' apply s.fits -o out.fits invert:mask=none.fits
refuse 1 's.fits: invert: mask = night/light_001.fits: must hold samples from 0 to 1; it goes from' \
    apply s.fits -o out.fits invert:mask=night/light_001.fits
# The map of stars is shown by the stretch of a picture.
check 0 '.' find-stars s.fits --map map.png --limit 1
check 0 '^$' render s.fits -o plain.png
median() { "$CORVANE" stats "$1" --csv | sed -n 2p | cut -d, -f5; }
[[ $(median map.png) == $(median plain.png) ]] || fail 'a map of stars is shown otherwise than a picture'
# A file may be called as a command is, and no step of `apply` is taken for one.
cp "${lights[0]}" stack
check 0 '320 x 240' info stack
check 0 '^$' apply stack -o info.fits invert
finish
