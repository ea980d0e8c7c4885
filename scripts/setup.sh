#!/usr/bin/env bash
# Installs what building and testing needs on a bare Debian 12 machine. Does nothing where all of it is there.
set -euo pipefail

packages=(g++ cmake ninja-build ccache git libfreeimage-dev libgtest-dev libgmock-dev libcli11-dev bison
  nlohmann-json3-dev python3 dpkg-dev)
if [ "${1:-}" = "--all" ]; then
  # For .ci/run and the benchmarks: format and static checks, fuzzing, and the libraries that we measure against.
  packages+=(clang clang-format clang-tidy libclang-rt-14-dev libbenchmark-dev libxml2-utils libtinyxml2-dev libpugixml-dev
    libexpat1-dev libsquish-dev libstb-dev libmimalloc-dev libjemalloc-dev lua5.4 chromium chromium-driver)
fi

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
  run=()
  if [ "$(id -u)" -ne 0 ]; then
    run=(sudo)
  fi
  echo "Installing ${missing[*]}"
  "${run[@]}" apt-get update -qq
  "${run[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
