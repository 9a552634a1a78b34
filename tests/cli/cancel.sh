# Ctrl-C during a stack: status 130, one word, no output; an older output stays.
source "$(dirname "$0")/check.bash"
set -m

"$MAKE_NIGHT" --lights 1 --darks 0 --flats 0 --bias 0 --size 1000x800 night >/dev/null || fail 'make-night'
for i in {1..40}; do
    cp night/light* "light$i.fits"
done
echo older >out.fits
before=$(find . | sort)

"$CORVANE" stack -v light*.fits -o out.fits --preview out.png --align shift --method clipped-median 2>said >printed &
job=$!
# The first stage has been told of: the others take long enough for a signal to arrive.
for _ in {1..1000}; do
    [[ -s said ]] && break
    sleep 0.01
done
kill -INT $job
wait $job
status=$?
[[ $status -eq 130 ]] || fail "status $status, not 130: $(<said)"
[[ $(tail -n 1 said) == 'corvane: cancelled' ]] || fail "said $(<said)"
rm said printed
[[ $(find . | sort) == "$before" ]] || fail 'something is left behind'
[[ $(<out.fits) == older ]] || fail 'the old output is gone'
finish
