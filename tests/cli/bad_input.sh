# Files that are missing, broken or do not fit, and outputs that cannot be: status 1, one line, nothing left behind.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 3 --darks 1 --flats 0 --bias 0 --size 120x90 night >/dev/null || fail 'make-night'
"$MAKE_NIGHT" --lights 1 --darks 1 --flats 0 --bias 0 --size 90x120 turned >/dev/null || fail 'make-night'
lights=(night/light*)
: >empty.fits
: >empty.png
echo 'no image' >text.fits
head -c 1000 "${lights[0]}" >short_header.fits
head -c 10000 "${lights[0]}" >short_data.fits
mkdir folder

for file in missing.fits empty.fits empty.png text.fits short_header.fits short_data.fits folder; do
    refuse 1 "^corvane: $file: " apply $file -o out.fits invert
    refuse 1 "^corvane: $file: " render $file -o out.png
    refuse 1 "^corvane: $file: " stack "${lights[@]}" $file -o out.fits --preview out.png
    refuse 1 "^corvane: $file: " stack "${lights[@]}" -o out.fits --dark $file
    refuse 1 "^corvane: $file: " apply "${lights[0]}" -o out.fits invert dark:file=$file
done
check 1 "missing.fits: .*size +120 x 90, 1 plane.*exposure +60 s" info missing.fits "${lights[0]}"
check 1 '"error": "no such file".*"width": 120' info --json missing.fits "${lights[0]}"

refuse 1 'light.*: dark: file = .*: is 90 x 120 .*the image is 120 x 90' \
    apply "${lights[0]}" -o out.fits "dark:file=$(echo turned/dark*)"
refuse 1 "turned/dark.*90 x 120" stack "${lights[@]}" -o out.fits --dark turned/dark*
# An input is replaced only when that is said, whatever its name.
frame=$(readlink -f "${lights[0]}")
cp "$frame" in.fits
ln -s in.fits link.fits
ln in.fits hard.fits
for output in in.fits ./folder/../in.fits link.fits hard.fits; do
    refuse 2 "^corvane: $output: is both input and output; --overwrite replaces it" apply in.fits -o $output invert
done
refuse 2 'is both input' apply "$frame" -o in.fits invert dark:file=link.fits
check 0 '^$' render in.fits -o picture.png
refuse 2 'is both input' render picture.png -o ./picture.png
refuse 2 'is both input' apply link.fits[0] -o in.fits invert
refuse 2 'is both input' composite "$frame" hard.fits -o in.fits --mode max
check 0 '^$' apply in.fits -o link.fits --overwrite invert
cmp -s in.fits hard.fits && fail '--overwrite did not replace the input'

mkfifo pipe
for file in pipe /dev/zero; do
    refuse 1 "^corvane: $file: is a (pipe|device); only ordinary files are read" apply in.fits -o out.fits curve:file=$file
    refuse 1 "^corvane: $file: is a (pipe|device); only" apply $file -o out.fits invert
    refuse 1 "^corvane: $file: is a (pipe|device); only" apply in.fits -o out.fits flat:file=$file
    CORVANE_CONFIG=$file refuse 1 "^corvane: $file: is a (pipe|device); only" ops
done

refuse 2 './out.png: is named for two outputs' stack "${lights[@]}" -o out.png --preview ./out.png
refuse 2 'is both input and output' stack "${lights[@]}" -o "night/../${lights[1]}"
refuse 2 'is both input and output' stack "${lights[0]}[0]" -o "${lights[0]}"
mkdir folder.png
refuse 1 '^corvane: none/out.png: ' apply "${lights[0]}" -o none/out.png invert
for output in folder.png none/out.png; do
    refuse 1 "^corvane: $output: " render "${lights[0]}" -o $output
    refuse 1 "^corvane: $output: " stack "${lights[@]}" -o out.fits --preview $output
done
refuse 1 'folder: is a folder; name its files, as folder/\*.fits' info folder

# A limit for the size of files stands for a full disk. What was there before stays.
olds=(old.fits old.tif old.png)
tee "${olds[@]}" <<<old >/dev/null
(
    ulimit -f 4
    refuse 1 'old.fits: cannot be written' apply "${lights[0]}" -o old.fits invert
    refuse 1 'old.tif: cannot be written' apply "${lights[0]}" -o old.tif invert
    refuse 1 'old.png: cannot be written' render "${lights[0]}" -o old.png
    refuse 1 'cannot be written' stack "${lights[@]}" -o out.fits --preview out.png
    finish
) || fail 'full disk'
[[ $(cat "${olds[@]}") == $'old\nold\nold' ]] || fail 'an old output is gone'
finish
