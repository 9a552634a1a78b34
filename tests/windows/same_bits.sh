#!/usr/bin/env bash
# same_bits.sh FILE COMMAND...: fails unless FILE holds what the command prints: what the same program prints on another
# system. A line that differs names the operation whose result depends on the system.
set -euo pipefail

[[ -s $1 ]] || { echo "give CMake a file of checksums as CORVANE_CHECKSUMS, as scripts/test-windows does" >&2; exit 1; }
"${@:2}" </dev/null | tr -d '\r' | diff "$1" -
echo "$(wc -l <"$1") lines agree"
