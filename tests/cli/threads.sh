# A night gives the same bytes with any number of threads, be there much memory or little.
source "$(dirname "$0")/check.bash"

# night BAYER RUNS OPTION...: stacks a night of a filter mosaic, or of none, with so many threads and so much memory.
night() {
    rm -rf night [0-9]* # of the night before
    "$MAKE_NIGHT" --lights 4 --darks 2 --flats 2 --bias 2 --size 400x280 --stars 120 --turn 0.5 --bayer "$1" night \
        >/dev/null || fail make-night
    local runs=$2
    shift 2
    for run in $runs; do
        check 0 '4 lights, [2-4] used.*stack: ' stack night/light* -o "$run.fits" --bias night/bias* \
            --dark night/dark* --flat night/flat* --cosmetic --with-maps --coverage-map "$run.map.fits" --report "$run.csv" \
            --threads "${run%:*}" --memory "${run#*:}" "$@"
        for made in fits map.fits csv; do
            cmp "1:1G.$made" "$run.$made" || fail "$run: another $made than with one thread"
        done
    done
}

night '' '1:1G 2:1G 3:3M 7:1G 32:4M' --method clipped-mean --weight noise --normalise local
night RGGB '1:1G 2:1G 3:3M 7:1G 32:4M'
night '' '1:1G 3:3M' --align shift --method clipped-median
night RGGB '1:1G 3:8M' --drizzle 1.5 --interpolate lanczos4 --normalise local
finish
