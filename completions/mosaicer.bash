# bash completion for mosaicer: its switches, and files for everything else.

_mosaicer() {
    local current=${COMP_WORDS[COMP_CWORD]}
    COMPREPLY=()
    if [[ $current == -b?* ]]; then
        mapfile -t COMPREPLY < <(compgen -P -b -d -- "${current#-b}")
    elif [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "-v -d -q -b -p -c -draft -tag_mips -? -help" -- "$current")
    fi
}

complete -o bashdefault -o default -F _mosaicer mosaicer
