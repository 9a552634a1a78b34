#!/usr/bin/env bash
# dll.sh DLL INTERFACE: fails unless the DLL shows just the classes and functions that the file INTERFACE lists, and
# needs none but the system's own DLLs.
set -euo pipefail

report=$(x86_64-w64-mingw32-objdump --private-headers "$1")

# Of a member its class, of a function its name.
shown=$(sed -n '/Ordinal\/Name Pointer/,/^$/{ /^\t/s/.* //p }' <<<"$report" | x86_64-w64-mingw32-c++filt |
    sed -E 's/^.* (for|to) //; s/[[(].*//; /^corvane::/!s/::.*//' | grep . | sort -u)
diff "$2" - <<<"$shown" >&2 || { echo "$1 does not show the interface (<) but this (>)" >&2; exit 1; }

needed=$(sed -n 's/.*DLL Name: //p' <<<"$report" | sort | xargs)
[[ $needed == "KERNEL32.dll USER32.dll msvcrt.dll" ]] || { echo "$1 needs $needed" >&2; exit 1; }
