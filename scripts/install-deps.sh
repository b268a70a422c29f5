#!/usr/bin/env bash
# Installs what building and testing OrvUtility needs, from Debian's packages,
# when it is missing. Safe to run again: it does nothing when all is there.
set -euo pipefail
need=()
command -v cmake >/dev/null 2>&1 || need+=(cmake)
command -v g++ >/dev/null 2>&1 || need+=(g++)
command -v make >/dev/null 2>&1 || need+=(make)
command -v pkg-config >/dev/null 2>&1 || need+=(pkg-config)
command -v nm >/dev/null 2>&1 || need+=(binutils)
[ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
[ -f /usr/include/gmock/gmock.h ] || need+=(libgmock-dev)
[ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
if [ ${#need[@]} -gt 0 ]; then
  echo "installing: ${need[*]}"
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${need[@]}"
fi
