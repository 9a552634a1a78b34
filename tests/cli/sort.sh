# Folders of frames that sort themselves: the same stacks as by lists, plans, masters, refusals.
source "$(dirname "$0")/check.bash"

make_night() {
    "$MAKE_NIGHT" --size 300x240 --stars 200 --darks 2 --flats 3 --bias 2 --lights 3 "$@" >/dev/null || fail "make-night $*"
}
same() { cmp -s "$1" "$2" || fail "$1 and $2 differ"; }

make_night --flat-darks 2 night
lists=(night/light* --dark night/dark* --flat night/flat_* --bias night/bias* --flat-dark night/flatdark*)
check 0 '3 used.*stack: folder.fits' stack night -o folder.fits
check 0 '^$' stack -q "${lists[@]}" -o lists.fits
check 0 '^$' stack -q night/*.fits --dark night/dark* -o files.fits --reference night/light_002.fits
check 0 '^$' stack -q night/light* --dark night -o only-darks.fits
check 0 '3 used.*night/light_002.fits .*\(reference\)' register night --reference ./night/light_002.fits
cmp -s only-darks.fits lists.fits && fail 'flats were used that nobody named'
same folder.fits lists.fits

# Masters are kept, taken up again, and made again when a file has changed.
check 0 'master dark: kept as night/masters/master_dark_' stack -v night -o kept.fits --masters night/masters
check 0 'master flat: nothing has changed since' stack -v night -o again.fits --masters night/masters
for stack in kept again; do
    cmp -s <(tail -c 288000 folder.fits) <(tail -c 288000 $stack.fits) || fail "$stack.fits: masters change samples"
done
touch -d yesterday night/dark_001.fits
check 0 'master bias: nothing has changed.*master dark: kept' stack -v night -o again.fits --masters night/masters
[[ $(head -c 2880 night/masters/master_flat_*) =~ IMAGETYP=\ \'Master\ Flat.*NCOMBINE=\ +3.*CALSTAT\ =\ \'D\  ]] || fail 'header of a master'
[[ $("$CORVANE" stack night -o x.fits --plan) == *' 2 from night/flatdark_001.fits '* ]] || fail 'a master in place of its frames'

# Two filters, one of them in two nights with flats of their own.
for words in 'Ha 0 1' 'Ha 2 2' 'O 2 3'; do
    read -r filter day seed <<<"$words"
    make_night --filter "$filter" --day "$day" --exposure $((60 + day)) --seed 1 --drift $((seed * 2)) "two/$filter$day"
done
check 0 'stack_Ha.fits +Ha +3 +60 +180 +2024-03-09 .* 3 from two/Ha0/flat.*stack_Ha.fits +Ha +3 +62 .*Ha2/flat.*stack_O.fits' \
    stack two --plan
[[ ! -e stack_Ha.fits ]] || fail 'a plan wrote something'
check 2 'output is required' stack two
check 0 '"output": "two_O.fits".*"flats": \[[^]]*two/O2/flat_001.fits' stack two -o two.fits --plan --json
check 0 'stack: two_Ha.fits.*preview: p_Ha.png.*stack: two_O.fits.*preview: p_O.png' stack two -o two.fits --preview p.png
check 0 '^$' stack -q two -o one.fits --filter o
same two_O.fits one.fits

make_night --camera-gain 7 --day 1 loud
refuse 1 'loud/dark_001.fits: the dark has gain 7, not 100 as the light night/light_001.fits; allow-mixed' \
    stack night/light* -o out.fits --dark loud/dark*
check 0 'note: loud/dark_001.fits: the dark has gain 7.*3 used' stack night/light* -o out.fits --allow-mixed --dark loud/dark*
refuse 2 '^corvane: --dark = night/light_001.fits: is named as a light, too' stack night/light* -o x.fits --dark night/light_001.fits
refuse 1 'two/O2/light_001.fits: the light has filter O, not Ha' stack two/{Ha0,O2}/light* -o x.fits
refuse 2 '^corvane: --filter = R: there are lights of Ha, O' stack two -o x.fits --filter R
refuse 2 '^corvane: --filter = none: there are lights of several' register two
mkdir empty
refuse 1 'empty: holds no frames' stack empty -o x.fits
cp night/dark* empty
refuse 2 'LIGHT = empty: there are no lights, but frames: 2 of kind dark' stack empty -o x.fits
finish
