#!/usr/bin/env bash
# Installs what is needed, builds, and packs the example textures. The result lies in out/demo.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release -DMOSAICER_BUILD_TESTS=OFF -B build/demo >/dev/null
cmake --build build/demo --target mosaicer

out=out/demo
rm -rf "$out"
build/demo/driver/mosaicer -v examples/textures examples/atlas_set.xml "$out"

echo "Made by that run, below $out:"
(cd "$out" && find . -type f | sort | sed 's#^\./#  #')
echo
echo "A picture to look at: $PWD/$out/example/title/atlas0/atlas.png"
