#!/bin/sh
# Measures the block encoders over a folder of pictures and puts the tables into docs/compression.md.
#   scripts/compression_tables.sh [FOLDER]        default: examples
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
folder=$(cd "${1:-$root/examples}" && pwd)
cd "$root"
cmake --preset bench >/dev/null
cmake --build --preset bench --target compression_tables >/dev/null
tables=$(mktemp)
page=$(mktemp)
trap 'rm -f "$tables" "$page"' EXIT
build/bench/bench/compression/compression_tables "$folder" >"$tables"
awk -v tables="$tables" '
    /<!-- tables end -->/ { inside = 0 }
    !inside { print }
    /<!-- tables begin -->/ { inside = 1; print ""; while ((getline line < tables) > 0) print line; print "" }
' docs/compression.md >"$page"
cp "$page" docs/compression.md
