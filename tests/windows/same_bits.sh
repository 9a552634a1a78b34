#!/usr/bin/env bash
# same_bits.sh PROGRAM COMMAND...: fails unless the program prints the same as the command that runs it on another system.
# A line that differs names the operation whose result depends on the system.
set -euo pipefail

[[ -x $1 ]] || { echo "$1 is missing: cmake --build --preset release --target corvane_checksum" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$1" >"$work/here.txt"
"${@:2}" </dev/null | tr -d '\r' >"$work/there.txt"
diff "$work/here.txt" "$work/there.txt"
echo "$(wc -l <"$work/here.txt") lines agree"
