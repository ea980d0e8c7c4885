#!/usr/bin/env bash
# Runs clang-tidy over the sources that changed since a commit (default: the one before the last). Needs a configured
# release build; where the commit is not to be had, as in a shallow clone, there is nothing to compare with.
set -euo pipefail
cd "$(dirname "$0")/.."
base=${1:-HEAD~1}

git rev-parse --quiet --verify "$base^{commit}" >/dev/null || { echo "no $base here: nothing to lint"; exit 0; }
git diff --name-only --diff-filter=d "$base" -- 'driver/*.cpp' 'packing/*.cpp' 'texture/*.cpp' 'compression/*.cpp' \
  'script/*.cpp' 'objects/*.cpp' 'source/*.cpp' 'tools/*.cpp' | head -n 40 |
  xargs --no-run-if-empty -P "$(nproc)" -n 1 clang-tidy -p build/release --quiet
