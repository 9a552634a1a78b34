#!/usr/bin/env bash
# Every operation has its test, its benchmark and its way to the user: names what is missing.
#   layout.sh ROOT
set -euo pipefail
cd "$1"

missing=0
miss() {
    echo "$1" >&2
    missing=1
}

# What implements a class of the interface, and what declares one.
sources=$(grep -lE '^[^ ].*\bCImg[A-Za-z]+::' corvane/*/*.cpp)
headers=$(grep -lE '^class CORVANE_API CImg' corvane/*/*.h)
[[ -n $sources && -n $headers ]] || miss "no operations found in $1/corvane"

for source in $sources; do
    stem=${source#corvane/}
    stem=${stem%.cpp}
    [[ -f tests/${stem}_test.cpp ]] || miss "$source has no tests/${stem}_test.cpp"
    [[ -f bench/$stem.cpp ]] || miss "$source has no bench/$stem.cpp"
done
for header in $headers; do
    grep -qF "#include \"$header\"" corvane/corvane.h || miss "$header is not in corvane/corvane.h"
    # What combines many frames is reached by `corvane stack`.
    [[ $header == corvane/combine/* ]] || grep -rqF "#include \"$header\"" catalogue ||
        miss "$header is in no catalogue entry"
done
exit $missing
