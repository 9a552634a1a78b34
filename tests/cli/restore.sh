# Restorations on the command line: what -v and the bar tell, and Ctrl-C.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 1 --darks 1 --flats 0 --bias 0 --size 800x600 night >/dev/null || fail 'make-night'
light=night/light_001.fits
check 0 'FWHM of the stars [2-4]\.[0-9]+ pixels.*gain 1\.5 electrons.*Iteration 2 : chi-sq = .*Iteration 2 of 2, chi-sq' \
    apply -v "$light" -o lucy.fits dark:file=night/dark_001.fits lucy:iterations=2
check 0 'array dimension .*main iter +2 .*Iteration 2 of 2, chi-square [0-9.]+ ' \
    apply -v "$light" -o maxent.fits maxent:iterations=2
check 0 '^$' apply "$light" -o wiener.fits wiener:fwhm=3.2
CORVANE_MEMORY=1M refuse 1 "$light: lucy: image: needs 0\.0[0-9]+ GB of memory" apply "$light" -o x.fits lucy

# What a terminal shows meanwhile.
script -qec "stty cols 100; '$CORVANE' apply -v $light -o out.fits lucy:sigma=1.4,iterations=30,gain=1e9" /dev/null \
    </dev/null >shown
grep -q 'Iteration [0-9]* of 30, chi-square [0-9.e+]* (Ctrl-C cancels) \[[#.]*\] [0-9:]*[^0-9:%]' shown ||
    fail "bar: $(<shown)"
grep -q 'ESC' shown && fail "a terminal is told of ESC: $(<shown)"

for step in lucy:iterations=10000,gain=1e9 maxent:iterations=10000,noise=1e-3; do
    interrupt 'iter\|chi-sq' apply -v "$light" -o out.fits "$step"
done
finish
