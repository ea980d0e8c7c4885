#!/usr/bin/env bash
# Runs the snippets of docs/integration.md as a reader would, in copies of the example folder.
#   integration_test.sh SOURCE WORK KST MOSAICER
set -euo pipefail
source=$1 work=$2

fail() {
    echo "integration_test: $*" >&2
    exit 1
}

# snippet LANGUAGE NUMBER: the lines of that code block, counted from 1.
snippet() {
    awk -v fence="\`\`\`$1" -v wanted="$2" '
        $0 == "```" { inside = 0 }
        inside && number == wanted
        $0 == fence { inside = 1; number++ }' "$source/docs/integration.md"
}

# A fresh copy of the example, and the programs side by side on the path.
rm -rf "$work"
mkdir -p "$work/bin"
ln -s "$3" "$work/bin/kst"
ln -s "$4" "$work/bin/mosaicer"
PATH=$work/bin:$PATH
enter() {
    cp -r "$source/examples" "$work/$1"
    cd "$work/$1"
}
# The plan looks for mosaicer beside the real kst, which a build tree has elsewhere.
sed_plan() { sed 's/kst atlas plan/& --mosaicer mosaicer/'; }

enter plain
bash -ec "$(snippet sh 1)" >/dev/null
reference=$work/plain/out
[ -s "$reference/example/ui/hud/atlas.dds" ] || fail "a plain run makes no atlas"

enter plan
bash -ec "$(snippet sh 2 | sed_plan)" >/dev/null
[ -s out/example/ui/hud/atlas.dds ] || fail "a plan makes no atlas"

if command -v make >/dev/null; then
    enter make_plan
    snippet make 1 | sed_plan >Makefile
    make >/dev/null
    make | grep 'no work to do' >/dev/null || fail "make with a plan is never done"
    diff -r "$reference" out

    enter make_stamp
    snippet make 2 >Makefile
    make >/dev/null
    make | grep 'up to date' >/dev/null || fail "make with a stamp is never done"
    sleep 0.02 && touch textures/ui/icon_home.png
    make | grep mosaicer >/dev/null || fail "make with a stamp does not see a texture"
    rm out/.stamp
    diff -r "$reference" out
fi

enter job
bash -ec "$(snippet sh 3 | sed_plan)" >/dev/null
diff -r "$reference" out

enter cache
for round in 1 2; do
    bash -ec "$(snippet sh 4)" >console
    [ "$round" = 1 ] || [ ! -s console ] || fail "the cache is missed"
done
diff -r "$reference" cache/*
echo "integration_test: good"
