#!/usr/bin/env bash
# The Python package as its users get it: by `cmake --install`, and by pip into a clean environment without a network.
#   package.sh BUILD PYTHON WORK
set -euo pipefail
build=$1 python=$2 work=$3
source=$(cd "$(dirname "$0")/../.." && pwd)
rm -rf "$work"
mkdir -p "$work/source"

# The module works, with the libraries that lie below the given folder.
try() {
    "$@" - <<'END'
import sys
import corvane
import numpy as np

assert np.array_equal(corvane.invert(np.eye(9, dtype=np.float32)), 1 - np.eye(9))
libraries = {line.split()[-1] for line in open("/proc/self/maps") if "libcorvane" in line}
assert libraries and all(sys.prefix in library or "/prefix/" in library for library in libraries), libraries
END
}

cmake --install "$build" --prefix "$work/prefix" >/dev/null
try env PYTHONPATH="$(dirname "$(dirname "$(find "$work/prefix" -name '_core*.so')")")" "$python"
[[ -f $work/prefix/share/doc/Corvane/notebooks/night.ipynb ]]

cp -r "$source"/{pyproject.toml,setup.py,README.md} "$work/source"
"$python" -m venv --system-site-packages "$work/environment"
CORVANE_BUILD=$build "$work/environment/bin/pip" install --quiet --no-build-isolation --no-index "$work/source"
cd "$work/environment"
try bin/python
files=$(bin/pip show --files corvane)
[[ $files == *corvane/py.typed* && $files == *corvane/operations.pyi* ]]
