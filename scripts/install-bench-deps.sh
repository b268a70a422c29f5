#!/usr/bin/env bash
# Installs the peer libraries that the benchmarks measure side by side with ours.
# The library itself never links them.
set -euo pipefail
pkgs=(libyuv-dev libswscale-dev libavutil-dev libzimg-dev libsoxr-dev libsamplerate0-dev libspeexdsp-dev)
missing=()
for p in "${pkgs[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}"
fi
