# shellcheck shell=bash
# Completion of iodbg and vboard for bash, and for zsh with bashcompinit. The programs themselves
# answer what may stand next.

# Offers words, one a line, that begin with what has been typed.
_bsp_offer() {
    local word
    while IFS= read -r word; do
        case $word in
        '') ;;
        "$cur"*) COMPREPLY+=("${word#"$before"}") ;;
        esac
    done <<<"$1"
    case ${COMPREPLY[*]-} in *=) compopt -o nospace 2>/dev/null || true ;; esac
}

_bsp_offer_files() {
    compopt -o filenames 2>/dev/null
    _bsp_offer "$(compgen "$@" -- "$cur")"
}

# Bash takes words apart at ":" and "="; puts them together again, but for an option's "=".
_bsp_join_words() {
    local i word joins=""
    line=()
    for ((i = 0; i <= COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        before=
        case $word in
        = | : | :: | :=)
            case ${line[${#line[@]} - 1]-}$word in
            -*=) [ "$i" -lt "$COMP_CWORD" ] || line+=("") ;;
            *)
                line[${#line[@]} - 1]+=$word
                joins=yes
                ;;
            esac
            continue
            ;;
        esac
        if [ -n "$joins" ]; then
            before=${line[${#line[@]} - 1]}
            line[${#line[@]} - 1]+=$word
            joins=
        else
            line+=("$word")
        fi
    done
}

# Completes another program's line, which begins at a word of this one.
_bsp_complete_inner() {
    local program=${line[$1]}
    if [ "$1" -eq $((${#line[@]} - 1)) ]; then
        _bsp_offer_files -c -f
        return
    fi
    case ${program##*/} in
    iodbg | vboard) _bsp_complete_words "${line[@]:$1}" ;;
    *)
        if declare -F _command_offset >/dev/null 2>&1; then
            _command_offset "$1"
        else
            _bsp_offer_files -f
        fi
        ;;
    esac
}

# Completes the last of a program's words: PROGRAM WORD...
_bsp_complete_words() {
    local line=("${@/#\~\//$HOME/}") answers answer words=""
    answers=$("${line[0]}" __complete -- "${line[@]:1}" 2>/dev/null)
    while IFS= read -r answer; do
        case $answer in
        $'\tprogram '*) _bsp_complete_inner $((${answer##* } + 1)) ;;
        $'\tfiles') _bsp_offer_files -f ;;
        $'\tfolders') _bsp_offer_files -d ;;
        *) words+=$answer$'\n' ;;
        esac
    done <<<"$answers"
    _bsp_offer "$words"
}

_bsp_tools() {
    local line=() before="" cur
    COMPREPLY=()
    _bsp_join_words
    cur=${line[${#line[@]} - 1]}
    _bsp_complete_words "${line[@]}"
}

complete -F _bsp_tools iodbg vboard
