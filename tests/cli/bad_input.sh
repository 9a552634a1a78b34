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
refuse 1 './out.png: is named for two outputs' stack "${lights[@]}" -o out.png --preview ./out.png
refuse 1 'is both input and output' stack "${lights[@]}" -o "night/../${lights[1]}"
refuse 1 'is both input and output' stack "${lights[0]}[0]" -o "${lights[0]}"
for output in folder none/out.fits out.jpg; do
    refuse 1 "^corvane: $output: " apply "${lights[0]}" -o $output invert
    refuse 1 "^corvane: $output: " render "${lights[0]}" -o $output
    refuse 1 "^corvane: $output: " stack "${lights[@]}" -o out.fits --preview $output
done

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
