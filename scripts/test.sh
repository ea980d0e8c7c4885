#!/usr/bin/env bash
# Installs what is needed, builds, and runs all tests. An argument names another preset (debug, asan-ubsan, scalar); what
# stands behind it goes to ctest.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}

scripts/setup.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
ctest --preset "$preset" -j "$(nproc)" "${@:2}"
