#!/usr/bin/env bash
# Builds the command-line converter and runs it on its built-in moving test
# pattern: 1920x1080 interlaced YUY2 (top field first) to 720x480 progressive
# RGB32, with a PNG contact sheet of six output frames.
#   scripts/convert-demo.sh [output-dir] [extra orv-convert options...]
# Installs what the build needs first (cmake, a C++ compiler) when missing.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
out=${1:-$here/build-converter/demo}
shift || true
need=()
command -v cmake >/dev/null 2>&1 || need+=(cmake)
command -v g++ >/dev/null 2>&1 || need+=(g++)
command -v make >/dev/null 2>&1 || need+=(make)
if [ ${#need[@]} -gt 0 ]; then
  echo "installing: ${need[*]}"
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${need[@]}"
fi
build=$here/build-converter
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=Release -DORV_BUILD_TESTS=OFF \
  -DORV_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" --target orv-convert
mkdir -p "$out"
"$build/tools/orv-convert" --pattern-size 1920x1080 --pattern-scan tff --pattern-format yuy2 \
  -n 60 -f rgb32 -s 720x480 --scan progressive --dar 4:3 --aspect keep \
  -o "$out/pattern-720x480.rgb32" --snapshot "$out/pattern-720x480.png" "$@"
echo "frames: $out/pattern-720x480.rgb32 (raw, 720x480, B G R X, top line first)"
echo "look at: $out/pattern-720x480.png"
