# What the command says of itself, and of a command line that it cannot make sense of.
source "$(dirname "$0")/check.bash"

check 0 '^corvane [0-9.]+$' --version
check 0 'info .*render .*apply .*stack .*ops ' --help
check 0 '^Calibrate, align.*corvane stack .*The stack to write: \.fits, \.tif or \.png.*--method' stack --help
check 0 '^invert .*auto-levels .*-100 to 100.*default 0\.2' ops
check 0 'Also called to-gray' ops to-grey
check 0 '"name": "auto-levels".*"default": "0.2"' ops --json

refuse 2 'a command is needed'
refuse 2 "unknown command 'stak'; did you mean stack\?" stak
refuse 2 "there is no command 'stak'" help stak
refuse 2 "unknown option '--versio'; did you mean --version\?" --versio
refuse 2 "unknown option '--out'; did you mean --output\?" stack --out a.fits b.fits
refuse 2 '--output is required' apply in.fits invert
refuse 2 'steps is required' apply in.fits -o out.fits
refuse 2 '--bits: 12 not in' apply in.fits -o out.fits --bits 12 invert
refuse 2 '--levels = middling: must be auto, file or MIN,MAX' render in.fits -o out.png --levels middling
refuse 2 '--method = mean: must be median|clipped-median|clipped-mean' stack in.fits -o out.fits --method mean
refuse 2 '--scale: twice not in .*levels' apply in.fits -o out.tif --scale twice invert
refuse 2 '--star' stack in.fits -o out.fits --star 5
refuse 2 '--memory = 10 potatoes' stack in.fits -o out.fits --memory '10 potatoes'
refuse 2 'no lights; put them first, or after `--`' stack -o out.fits --bias bias.fits light.fits

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
finish
