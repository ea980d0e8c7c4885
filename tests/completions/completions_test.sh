#!/usr/bin/env bash
# What the completions offer, and the manual has entries for, against what the programs tell of themselves.
#   completions_test.sh COMPLETIONS KST MOSAICER
set -euo pipefail
completions=$1 kst=$2 mosaicer=$3
manual=$completions/../docs/man/kst.1

fail() {
    echo "completions_test: $*" >&2
    exit 1
}

# The first words below a heading of a help text, by other means than the completions use.
names() {
    local heading=$1
    shift
    "$@" --help | sed -n "/^$heading:/,/^\$/s/^  \([^ ]*\) .*/\1/p" | tr ',' '\n'
}

# offered PROGRAM WORD...: what bash offers for the last word.
offered() (
    # shellcheck disable=SC1090,SC2034
    source "$completions/${1##*/}.bash"
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    "_${1##*/}"
    printf '%s\n' "${COMPREPLY[@]}"
)

expect() {
    local what=$1 wanted=$2 found=$3
    [ -n "$wanted" ] || fail "$what: the help text tells nothing"
    [ "$(sort <<<"$wanted")" = "$(sort <<<"$found")" ] || fail "$what: offers '$found' in place of '$wanted'"
}

expect "kst" "$(names Subcommands "$kst")" "$(offered "$kst" "")"
for group in $(names Subcommands "$kst"); do
    expect "kst $group -" "$(names Options "$kst" "$group")" "$(offered "$kst" "$group" -)"
    for command in $(names Subcommands "$kst" "$group"); do
        offered "$kst" "$group" "" | grep -x "$command" >/dev/null || fail "kst $group does not offer $command"
        expect "kst $group $command -" "$(names Options "$kst" "$group" "$command")" \
            "$(offered "$kst" "$group" "$command" -)"
        grep -B 1 "^\.BI \"$group $command " "$manual" | grep -qx '\.TP' || fail "kst $group $command has no entry in $manual"
    done
done
[ "$(offered "$kst" xml dump "")" = "" ] || fail "files are left to the shell"
[ "$(offered "$kst" at)" = atlas ] || fail "a word that was begun is ended"

switches=$("$mosaicer" '-?' | sed -n 's/^\(-[a-z_?]*\).* - .*/\1/p')
offered "$mosaicer" - | grep -x -- -help >/dev/null || fail "mosaicer does not offer -help"
expect "mosaicer -" "$switches" "$(offered "$mosaicer" - | grep -vx -- -help)"

if command -v zsh >/dev/null; then
    # zsh's own functions are stood in for by ones that print what they are given.
    zsh_offered() {
        zsh -fc '_describe() { print -l -- ${(P)2%%:*} } ; _files() { print FILES }
                 words=("${@[2,-1]}") CURRENT=$#words; source "$1"' zsh "$completions/_kst" "$@"
    }
    expect "zsh: kst" "$(names Subcommands "$kst")" "$(zsh_offered "$kst" "")"
    expect "zsh: kst atlas" "$(names Subcommands "$kst" atlas)" "$(zsh_offered "$kst" atlas "")"
    expect "zsh: kst xml dump -" "$(names Options "$kst" xml dump)" "$(zsh_offered "$kst" xml dump -)"
    expect "zsh: kst xml dump" FILES "$(zsh_offered "$kst" xml dump "")"
    for switch in $switches; do
        grep -q -- "$switch-\?\[" "$completions/_mosaicer" || fail "zsh: mosaicer does not offer $switch"
    done
    zsh -n "$completions/_mosaicer"
fi
echo "completions_test: good"
