# What the command says of itself, and of a command line that it cannot make sense of.
source "$(dirname "$0")/check.bash"

check 0 '^corvane [0-9.]+$' --version
check 0 'info .*render .*apply .*stack .*ops ' --help
check 0 '^Calibrate, align.*corvane stack .*The stack to write: \.fits, \.tif or \.png.*--method' stack --help
check 0 '^Levels
  invert .*
  auto-levels  .*
Calibration
  dark ' ops
check 0 '^auto-levels .*-100 to 100.*default 0\.2' ops auto-levels
check 0 'No step is called blur; these may serve:
  gaussian .*
  mean ' ops blur
check 0 'List what `apply` can do.*--threads N' help ops
check 0 'Also called to-gray' ops to-grey
check 0 '"name": "auto-levels".*"group": "Levels".*"default": "0.2"' ops --json

refuse 2 'a command is needed'
for word in stak Stack stacks; do
    refuse 2 "unknown command '$word'; did you mean stack\? \(see \`corvane help\`\)" $word
done
refuse 2 "there is no command 'stak'; did you mean stack\?" help stak
refuse 2 'it is a step of `apply`: see `corvane ops median`' help median
refuse 2 "unknown step 'nosuch'; \`corvane ops\` lists the steps" ops nosuch
refuse 2 "unknown option '--versio'; did you mean --version\?" --versio
refuse 2 "unknown option '--out'; did you mean --output\?" stack --out a.fits b.fits
refuse 2 '--output is required \(see `corvane help apply`\)' apply in.fits invert
refuse 2 'no step is given: `corvane ops` lists them' apply in.fits -o out.fits
refuse 2 '--levels = middling: must be auto, file or MIN,MAX' render in.fits -o out.png --levels middling
refuse 2 '--method = mean: must be median, clipped-median or clipped-mean' stack in.fits -o out.fits --method mean
refuse 2 'no lights; put them first, or after `--`' stack -o out.fits --bias bias.fits light.fits

# What the command line alone shows to be wrong gives 2, whatever the files hold; none of these is there.
while IFS='|' read -r command words; do
    for mistake in ${words//;/ }; do
        refuse 2 '' $command ${mistake//,,/ }
    done
done <<'END'
info|--nosuch,,a
stats|a,,--threads,,0;a,,--rect,,1:2;a,,--json,,--csv
ops|nosuch;--nosuch
apply a.fits -o out.fits|nosuch;invert:x;invert:x=1;clip:min=a;--scale,,twice,,invert;lucy:sigma=99;levels;--bits,,12,,invert
apply a.fits -o|-,,--recipe,,nosuch;x.fits,,--save-recipe;none/{name}.jpg,,invert;{name}.png,,--bits,,32,,invert
develop a.fits|-o,,x.gif;-o,,x.jpg,,--bits,,16;-o,,x.fits,,--size,,9;-o,,x.png,,--bits,,32;-o,,x.png,,--recipe,,no;-o,,a.fits
recipes|a,,b;--nosuch
apply a.fits invert -o|out;out.jpg;out.png,,--bits,,32
render a.fits -o|out.gif;out.fits;out.png,,--levels,,5,x;out.png,,--levels,,auto,,--stretch,,auto;out.jpg,,--bits,,16;out.png,,--size,,0
split a.fits -o out.fits --component|q
split a.fits --component r -o|out.jpg
stack a.fits -o|out.tif,,--with-maps;out.jpg;a.fits;./a.fits;out.fits,,--preview,,out.gif;out.png,,--preview,,./out.png
stack a.fits b.fits -o out.fits|a.fits;--size,,4;--search,,-1;--pedestal,,nan;--star,,5;--star,,5,6;--combine,,median,--weight,,fwhm
stack a.fits b.fits -o out.fits|--reject,,esd,,--low,,2;--drizzle,,2,,--combine,,max;--reject,,minmax,,--high,,1.5;--reject,,minmax,,--iterations,,3;--method,,median,,--combine,,sum
stack a.fits b.fits -o out.fits|--scale,,--align,,none;--cosmetic;--flat-dark,,f;--reference,,c;--bayer,,X;--memory,,1x
stack a.fits b.fits -o out.fits|--coverage-map,,m.jpg;--noise-map,,n.fits,,--combine,,max;--reject-map,,out.fits;--report,,r.txt;--reject-fwhm,,-1
register a.fits b.fits|--report,,r.txt;--report,,a.fits;--search,,9999;--align,,up
composite a b -o out.fits|--mode,,no;--mode,,sum,,--ratio,,7;--mode,,sum,,--rect,,1:2:3;--mode,,sum,,--points,,1,2
composite a b -o out.fits --mode desaturate|--ratio,,2,,--angle,,91
composite a b --mode sum -o|out.jpg;out.fits,,--box,,4;out.fits,,--dx,,nan;out.fits,,--align,,points
mosaic a b -o out.fits|--mode,,no;--mode,,key;--mode,,key,,--key,,x;--background,,5;--angle,,1e9
match a b|--start,,1;--range,,5;--start,,0,0,,--range,,5000;--least,,2;--start,,1,nan
rgb a b c -o|out.jpg;out.fits,,--align,,up;out.fits,,--align,,shift;out.fits,,--size,,3;out.fits,,--outside,,x
cmy a b c -o out.fits|--shift2,,1;--points,,1,2;--align,,points;--box,,1000
lrgb a b -o out.fits|--scale,,0;--at,,x;--range,,1
palette|sho,,-o,,out.fits;-o,,out.fits
palette sho a b c -o|out.jpg;out.fits,,--align,,shift;out.fits,,--balance,,up;out.fits,,--outside,,x
continuum a b -o out.fits|--factor,,-1;--align,,up;--shift2,,1,1
stars a.fits|--at,,5;--plot,,p.png;--map,,m.gif;--plane,,5;--sigmas,,0;--limit,,0;--json,,--csv;--map,,x.png,,--plot,,x.png
find-stars a.png|--map,,a.png;--map,,m.gif;--saturation,,x;--sigmas,,nan
END

printf '[PrcAutoLevel]\nMin=0.5\nMax = 2 \n' >settings.ini
CORVANE_CONFIG=settings.ini check 0 'default 0\.5.*default 2' ops auto-levels
printf '; mine\n[PrcAutoLevel]\nMin=dark\n' >settings.ini
CORVANE_CONFIG=settings.ini refuse 1 'settings.ini: line 3: the value of Min is not a number' ops
CORVANE_CONFIG=none.ini refuse 1 'none.ini: no such file' ops
mkdir -p home/corvane
printf 'Min=1\n' >home/corvane/settings.ini
XDG_CONFIG_HOME=home refuse 1 'home/corvane/settings.ini: line 1: Min stands before the first \[section\]' ops
for words in ops --help 'help stack' 'stack --help' --version; do
    "$CORVANE" $words >/dev/full 2>message && fail "$words: a full standard output went unnoticed"
    [[ $(<message) == 'corvane: standard output: cannot be written' ]] || fail "$words, full output: $(<message)"
done
for size in plenty 12X 100K -1; do
    CORVANE_MEMORY=$size refuse 2 "CORVANE_MEMORY = $size: must be at least 1M, in bytes or with K, M or G" ops
    CORVANE_MEMORY=$size check 0 '^corvane' --version
done
CORVANE_THREADS=0 refuse 2 '--threads: Value 0 not in range 1 to 1024' ops

# A little less memory than it takes to start, down to what cannot be loaded: no exception is left without a catcher.
starts() { (ulimit -v "$1" && "$CORVANE" --version) >started 2>&1; }
enough=4194304
for ((step = enough / 2; step > 2; step /= 2)); do
    starts $((enough - step)) && enough=$((enough - step))
done
for ((less = 8; less < 450; less += 16)); do
    starts $((enough - less))
    ! grep 'terminate called' started || fail "terminated with $((enough - less)) KiB"
done
finish
