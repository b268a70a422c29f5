#!/usr/bin/env bash
# Builds OrvUtility and runs its whole test suite.
#   scripts/test.sh [build-dir] [extra cmake options...]
# Installs the build dependencies first when they are missing.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build}
shift || true
"$here/scripts/install-deps.sh"
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=Release "$@"
cmake --build "$build" -j "$jobs"
ctest --test-dir "$build" --output-on-failure -j "$jobs"
