# Many images, recipes, `develop`, and standard input and output.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 3 --darks 2 --flats 0 --bias 0 --size 320x240 --bayer RGGB --seed 5 night >/dev/null ||
    fail 'make-night'
check 0 '' stack night/light* -o colour.fits --report report.html
grep -A1 '<h1>' report.html | grep -q '^<img class="stack" .*src="data:image/jpeg;base64,/9j/' ||
    fail 'the report does not begin with the stack'
check 0 '' stack night/light* -o alone.fits
cmp -s colour.fits alone.fits || fail 'a report changes the stack'
cp night/light_001.fits mono.fits
echo 'no image' >text.fits
printf '# mine\n\nclip:min=500,max=3000\n  invert\n' >my.recipe

# Images come first; a word that is no step must be a file.
check 0 '^$' apply mono.fits -o one.fits clip:min=500,max=3000 invert to-color
mkdir there
for output in there new/ 'there/{name}_b.fits'; do
    check 0 '^$' apply mono.fits night/light_002.fits -o "$output" clip:min=500,max=3000 invert
done
cmp -s there/light_002.fits new/light_002.fits && cmp -s there/mono.fits there/mono_b.fits || fail 'outputs of folders'
check 0 '^$' apply night/light_002.fits -o '{name}.fits' clip:min=500,max=3000 invert
cmp -s light_002.fits there/light_002.fits || fail 'one image and many give different results'
cp mono.fits invert
refuse 2 "'invert' is a step and a file: write ./invert for the file, or put it first" apply mono.fits invert -o out.fits
check 0 '^$' apply invert ./mono.fits -o '{name}_c.fits' --recipe my.recipe
rm invert
refuse 2 "unknown step 'medain'; did you mean median\?" apply mono.fits medain:type=1 -o out.fits
refuse 2 "'medain' is neither a step nor a file; did you mean median\?" apply mono.fits medain -o out.fits
refuse 2 "'gone.fits' is neither a step nor a file" apply mono.fits gone.fits invert -o there
refuse 2 "'colour.fits' is no step but a file: images come before the steps" apply mono.fits invert colour.fits -o there
refuse 2 "no image is given: 'invert' is a step" apply invert -o out.fits
refuse 2 'several images need a folder' apply mono.fits colour.fits invert -o out.fits
refuse 2 'fresh/mono.fits: would be written for two images' apply mono.fits ./mono.fits invert -o fresh/
refuse 2 './colour.fits: is both input and output' apply colour.fits mono.fits invert -o './{name}.fits'
refuse 2 'sky.fits: would be written for each of several images' \
    apply mono.fits colour.fits background:model-file=sky.fits -o there
refuse 2 'stdin.fits: would be written for two images' apply - - -o '{name}.fits' invert
refuse 2 './my.recipe: is both input and output' \
    apply mono.fits -o out.fits --recipe my.recipe --save-recipe ./my.recipe
refuse 1 'keep their values' apply mono.fits colour.fits -o fresh/ --scale levels invert
refuse 1 "no folder 'none/fresh/?'" apply mono.fits -o none/fresh/ invert
# The name of an image is that without folder and endings; nothing in it is taken for a pattern.
cp mono.fits '{name}.fits'
gzip -k mono.fits
mkdir names
check 0 '^$' apply '{name}.fits' mono.fits.gz 'night/light_001.fits[0]' -o 'names/{name}_{name}.tif' invert
[[ $(ls names) == $'light_001_light_001.tif\nmono_mono.tif\n{name}_{name}.tif' ]] || fail "names: $(ls names)"
rm mono.fits.gz
# The others are made when one fails.
check 1 'text.fits: is not a FITS.*corvane: 1 of 3 images failed' apply mono.fits text.fits colour.fits -o failing/ invert
[[ $(ls failing) == $'colour.fits\nmono.fits' ]] || fail "one of several failed, and there is: $(ls failing)"
check 0 '\[2/2\] Inverting' apply -v mono.fits colour.fits -o there invert
check 0 '^$' apply mono.fits colour.fits -o '{name}.fits' --overwrite clip:min=0,max=60000

# A recipe is the same as its steps, and so are the one that is saved and the one that a header tells of.
check 0 '^$' apply mono.fits -o steps.fits clip:min=500,max=3000 invert median
check 0 '^$' apply mono.fits -o recipe.fits --recipe my.recipe --save-recipe saved.recipe median
check 0 '^$' apply mono.fits -o saved.fits --recipe saved.recipe
"$CORVANE" recipes recipe.fits >told.recipe
[[ $(head -n 1 told.recipe) == clip:min=0,max=60000 ]] || fail "HISTORY as a recipe: $(<told.recipe)"
diff <(sed 1d told.recipe) saved.recipe || fail 'HISTORY and --save-recipe differ'
cmp -s steps.fits recipe.fits && cmp -s steps.fits saved.fits || fail 'a recipe does something else than its steps'
refuse 2 './out.fits: is named for two outputs' apply mono.fits -o out.fits --save-recipe ./out.fits invert
refuse 2 './mono.fits: is both input and output' apply mono.fits -o out.fits --save-recipe ./mono.fits invert
printf 'invert\nmedain\n' >wrong.recipe
refuse 1 'wrong.recipe: line 2: unknown step .medain.; did you mean median\?' apply mono.fits -o out.fits --recipe wrong.recipe
refuse 1 'mono.fits: line 1: is no text' apply mono.fits -o out.fits --recipe mono.fits
refuse 2 '--recipe = nebual: must be galaxy, .*did you mean nebula\?' develop mono.fits -o out.png --recipe nebual
refuse 1 'light_003.fits: its header tells of no step' recipes night/light_003.fits

# From stack to picture; what is for colours is left out of one plane.
check 0 'galaxy .*nebula .*cluster .*moon ' recipes
check 0 '^# nebulae.*background:degree=1' recipes nebula
check 0 'note: white-balance is left out: the image must have 3 planes; it has 1' develop mono.fits -o mono.png
check 1 'mono.fits: white-balance: image: must have 3 planes' apply mono.fits -o out.fits white-balance
for recipe in galaxy nebula cluster moon my.recipe; do
    check 0 '' develop colour.fits -o "$(basename $recipe .recipe).png" --recipe $recipe
done
cmp -s galaxy.png nebula.png && fail '--recipe makes no difference'
check 0 '' develop colour.fits -o small.tif --size 160
check 0 '160 x 120, 3 planes.*TIFF, 16 bits' info small.tif
check 0 '' develop colour.fits -o developed.fits
check 0 '' render developed.fits -o shown.png
cmp -s galaxy.png shown.png || fail 'a developed frame is shown otherwise than the picture of it'
check 0 '' develop colour.fits -o counts.fits --bits 16
check 0 'FITS, 16 bits' info counts.fits
refuse 2 '--size = 100: is for pictures' develop colour.fits -o out.fits --size 100
refuse 2 'out.gif: is no name' develop colour.fits -o out.gif

# Standard input and output.
"$CORVANE" apply - -o - invert <mono.fits >piped.fits
check 0 '^$' apply mono.fits -o named.fits invert
cmp -s piped.fits named.fits || fail 'standard input and output give another result'
check 0 '^-.*320 x 240' info - <mono.fits
check 0 ' -$' stats - <mono.fits
"$CORVANE" render - -o piped.png <mono.fits && "$CORVANE" render mono.fits -o named.png
cmp -s piped.png named.png || fail 'render of standard input'
refuse 1 'standard input: is not a FITS' apply - -o out.fits invert <text.fits
"$CORVANE" apply mono.fits -o - invert 2>message >/dev/full && fail 'a full standard output went unnoticed'
[[ $(<message) == 'corvane: standard output: cannot be '* ]] || fail "full output: $(<message)"
finish
