#!/usr/bin/env bash
# Runs every fuzz target for some seconds (default 10) from its seeds. A finding ends the run and leaves its input in
# build/fuzz. Needs clang.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-10}

cmake --preset fuzz >/dev/null
# The targets and what they rest on, not the programs.
mapfile -t targets < <(sed -n 's/^mosaicer_add_fuzz_target(\([a-z_]*\) .*/fuzz_\1/p' fuzz/CMakeLists.txt)
cmake --build --preset fuzz --target "${targets[@]}"

fuzz() {
  target=$1 name=${1##*/fuzz_}
  corpus=build/fuzz/corpus/$name
  mkdir -p "$corpus"
  # What a target prints is shown when it ends, as others run beside it.
  status=0
  "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 -print_final_stats=0 -verbosity=0 \
    -artifact_prefix="build/fuzz/$name-" "$corpus" "fuzz/seeds/$name" >"build/fuzz/$name.log" 2>&1 || status=$?
  echo "-- $name"
  cat "build/fuzz/$name.log"
  return $status
}
export -f fuzz
export seconds
printf 'build/fuzz/fuzz/%s\0' "${targets[@]}" | xargs -0 -n 1 -P "$(nproc)" bash -c 'fuzz "$0" || exit 255'
