# Sourced by the tests of the command, which run in an empty folder. CORVANE and MAKE_NIGHT name the programs.
set -u
: "${CORVANE:?}" "${MAKE_NIGHT:?}"
export CORVANE_CONFIG= XDG_CONFIG_HOME=$PWD/no-settings
failures=0

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# check STATUS PATTERN ARGUMENT...: runs the command; what it says must match the extended regular expression.
check() {
    local status=$1 pattern=$2 got=0 said
    shift 2
    said=$("$CORVANE" "$@" 2>&1) || got=$?
    [[ $got -eq $status ]] || fail "corvane $*: status $got, not $status: $said"
    [[ $said =~ $pattern ]] || fail "corvane $*: said '$said', not '$pattern'"
}

# refuse STATUS PATTERN ARGUMENT...: as check, and there must be one line of error and nothing new in the folder.
refuse() {
    local before said
    before=$(find . | sort)
    check "$@"
    said=$("$CORVANE" "${@:3}" 2>&1 >/dev/null)
    [[ $said == corvane:* && $said != *$'\n'* ]] || fail "corvane ${*:3}: not one line of error: '$said'"
    [[ $(find . | sort) == "$before" ]] || fail "corvane ${*:3}: left something behind"
}

# interrupt SAYING ARGUMENT...: Ctrl-C once the command has said something like that. It must stop at once, say one line
# more, and leave nothing behind but the older out.fits.
interrupt() {
    local saying=$1 before job status=0
    shift
    echo older >out.fits
    : >said
    before=$(find . | sort)
    set -m # a job of its own hears of Ctrl-C
    "$CORVANE" "$@" >said 2>&1 &
    job=$!
    for _ in {1..1000}; do
        grep -q "$saying" said && break
        sleep 0.01
    done
    kill -INT $job
    wait $job || status=$?
    [[ $status -eq 130 ]] || fail "corvane $*: status $status, not 130: $(tail -n 3 said)"
    [[ $(tail -n 1 said) == 'corvane: cancelled' ]] || fail "corvane $*: said $(tail -n 3 said)"
    [[ $(find . | sort) == "$before" ]] || fail "corvane $*: left something behind"
    [[ $(<out.fits) == older ]] || fail "corvane $*: the old output is gone"
}

finish() {
    [[ $failures -eq 0 ]] || exit 1
}
