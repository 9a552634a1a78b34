#!/usr/bin/env bash
# compare.sh PROGRAM LIBRARY KEPT: runs PROGRAM with LIBRARY and with each of its processor variants that this machine can
# run. All must print the same, which is kept in a file, and the best of them must be the one that the loader takes when
# left alone. No variant, whether it can run here or not, may hold a fused multiply-add, which rounds once where the
# others round twice.
set -euo pipefail

program=$1
library=$(realpath -s "$2")
kept=$3
soname=$(basename "$library")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The loader would prefer a variant beside the base library, so the base stands in a folder of its own.
mkdir "$work/base"
ln -s "$library" "$work/base/$soname"

# Fails unless the loader, looking in folder $1 first, takes the library in folder $2.
expect_loaded() {
    local loaded
    loaded=$(LD_LIBRARY_PATH=$1 ldd "$program")
    if [[ $loaded != *"=> $2/$soname "* ]]; then
        echo "$program does not load $2/$soname" >&2
        exit 1
    fi
}

run_with() {
    expect_loaded "$1" "$1"
    LD_LIBRARY_PATH=$1 "$program"
}

run_with "$work/base" >"$work/base.txt"
[[ -s $work/base.txt ]] || { echo "$program printed nothing" >&2; exit 1; }

loader=$(ldd "$program" | grep -o '/[^ ]*ld-linux[^ ]*')
supported=$("$loader" --help | awk '/^  x86-64-v[0-9]+ \(supported/ { print $1 }')
best=$(dirname "$library")
failed=0
for folder in "$(dirname "$library")"/glibc-hwcaps/*/; do
    folder=${folder%/}
    level=$(basename "$folder")
    if objdump -d --no-show-raw-insn "$folder/$soname" | grep -m 3 -E '\svfn?m(add|sub)'; then
        echo "$level: holds fused multiply-adds" >&2
        failed=1
    fi
    if ! grep -qx "$level" <<<"$supported"; then
        echo "$level: this processor cannot run it"
        continue
    fi
    best=$folder
    run_with "$folder" >"$work/$level.txt"
    if diff "$work/base.txt" "$work/$level.txt"; then
        echo "$level: the same as the base library"
    else
        echo "$level: differs from the base library (<)" >&2
        failed=1
    fi
done
expect_loaded "" "$best"
cp "$work/base.txt" "$kept"
exit $failed
