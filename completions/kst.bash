# bash completion for kst. It asks the program, so that it knows every subcommand and option of the version that is run.

# The first words of the lines below a heading of a help text, commas taken for blanks.
_kst_listed() {
    local heading=$1
    shift
    "$@" --help 2>/dev/null | awk -v heading="$heading:" '
        $0 == heading { inside = 1; next }
        !NF || /^[^ ]/ { inside = 0 }
        inside && /^  [^ ]/ { n = split($1, names, ","); for (i = 1; i <= n; i++) print names[i] }'
}

_kst() {
    local current=${COMP_WORDS[COMP_CWORD]} word known
    local command=("${COMP_WORDS[0]}")
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        known=$(_kst_listed Subcommands "${command[@]}")
        [[ $'\n'$known$'\n' == *$'\n'"$word"$'\n'* ]] && command+=("$word")
    done
    if [[ $current == -* ]]; then
        known=$(_kst_listed Options "${command[@]}")
    else
        known=$(_kst_listed Subcommands "${command[@]}")
    fi
    # A command without subcommands takes files: an empty reply leaves them to the shell.
    mapfile -t COMPREPLY < <(compgen -W "$known" -- "$current")
}

complete -o bashdefault -o default -F _kst kst
