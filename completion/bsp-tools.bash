# shellcheck shell=bash
# Completion of iodbg and vboard for bash, and for zsh with bashcompinit. Commands, options and words
# come from the programs' own --help, properties and models from the virtual board itself.

# The help of a command, a line for each entry: "Subcommands", "Options" or "Positionals", its names,
# and its text, with tabs between them.
_bsp_help() {
    "$@" --help 2>/dev/null | awk '
        function flush() {
            if (entry != "") {
                names = entry
                sub(/  +.*/, "", names)
                text = substr(entry, length(names) + 1)
                sub(/^ +/, "", text)
                printf "%s\t%s\t%s\n", section, names, text
            }
            entry = ""
        }
        /^[A-Z][a-z]+:$/ { flush(); section = substr($0, 1, length($0) - 1); next }
        /^[^ ]/ { flush(); section = "" }
        section == "" || /^$/ { next }
        /^  [^ ]/ { flush(); entry = substr($0, 3); next }
        { sub(/^ +/, ""); entry = entry (entry ~ /  / ? " " : "  ") $0 }
        END { flush() }'
}

# What the help has of a kind: its entries' names and texts.
_bsp_entries() {
    local kind=$1 help=$2 section names text
    while IFS=$'\t' read -r section names text; do
        [ "$section" != "$kind" ] || printf '%s\t%s\n' "$names" "$text"
    done <<<"$help"
}

# The first names of all entries of a kind; with "all", also their other names.
_bsp_names() {
    local names text
    while IFS=$'\t' read -r names text; do
        if [ "${3-}" = all ]; then
            printf '%s\n' "${names//, /$'\n'}"
        else
            printf '%s\n' "${names%%,*}"
        fi
    done <<<"$(_bsp_entries "$1" "$2")"
}

# The long names of all options.
_bsp_options() {
    local names text
    while IFS=$'\t' read -r names text; do
        names=${names%% *}
        [ -z "$names" ] || printf '%s\n' "${names##*,}"
    done <<<"$(_bsp_entries Options "$1")"
}

# The value that an option takes and its text; nothing of an option without a value.
_bsp_option_value() {
    local option=$2 names text value
    while IFS=$'\t' read -r names text; do
        case ,${names%% *}, in
        *",$option,"*)
            value=${names#* }
            value=${value%% *}
            case $value in
            "$names" | *: | REQUIRED) ;;
            *) printf '%s\t%s\n' "${value%%=*}" "$text" ;;
            esac
            return
            ;;
        esac
    done <<<"$(_bsp_entries Options "$1")"
}

# The name and the text of the argument with a number; the last one may stand for all that follow.
_bsp_argument() {
    local left=$2 names text last=""
    while IFS=$'\t' read -r names text; do
        [ -n "$names" ] || continue
        last=$names
        if [ "$left" -eq 0 ]; then
            printf '%s\t%s\n' "${names%% *}" "$text"
            return
        fi
        left=$((left - 1))
    done <<<"$(_bsp_entries Positionals "$1")"
    case $last in
    *...) printf '%s\t%s\n' "${last%% *}" "$text" ;;
    esac
}

# The words in a text that stand side by side: "on|off". What a user has to fill in is capitals.
_bsp_words() {
    local group word
    for group in ${1//[ ,;()]/ }; do
        case $group in
        *\|*)
            for word in ${group//\|/ }; do
                word=${word%:}
                case $word in *=*) word=${word%%=*}= ;; esac
                case $word in *[A-Z]*) ;; *) printf '%s\n' "$word" ;; esac
            done
            ;;
        esac
    done
}

# The first words of what vboard lists.
_bsp_first_words() {
    "$@" 2>/dev/null | sed 's/[ :].*//'
}

_bsp_properties() {
    "$1" get "$2" --json 2>/dev/null | sed -n '/\.note": /d; s/^  "\([^"]*\)": .*/\1/p'
}

# Answers those of some words, one a line, that begin with what has been typed.
_bsp_offer() {
    local word
    while IFS= read -r word; do
        case $word in
        '') ;;
        "$cur"*) COMPREPLY+=("${word#"$before"}") ;;
        esac
    done <<<"$1"
    case ${COMPREPLY[*]-} in *=) compopt -o nospace 2>/dev/null ;; esac
}

_bsp_offer_files() {
    compopt -o filenames 2>/dev/null
    _bsp_offer "$(compgen "$1" -- "$cur")"
}

# Answers what may stand for a value, by its name and its text.
_bsp_offer_value() {
    local name=$1 text=$2 program=$3 folder=$4
    case ${program##*/}:$name in
    *:FILE | *:IN | *:OUT) _bsp_offer_files -f ;;
    *:DIR) _bsp_offer_files -d ;;
    vboard:NAME) _bsp_offer "$(_bsp_properties "$program" "$folder")" ;;
    vboard:ID)
        case $text in
        *list-models*) _bsp_offer "$(_bsp_first_words "$program" list-models)" ;;
        *) _bsp_offer "$(_bsp_first_words "$program" fault "$folder" list)" ;;
        esac
        ;;
    *)
        _bsp_offer "$(_bsp_words "$name $text")"
        case $text$cur in *'path of a device'/*) _bsp_offer_files -f ;; esac
        ;;
    esac
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

# Completes behind "vboard run DIR --", where another program's line begins at a word.
_bsp_complete_inner() {
    local start=$1 program=${line[$1]-}
    if [ "$start" -eq $((${#line[@]} - 1)) ]; then
        compopt -o filenames 2>/dev/null
        _bsp_offer "$(compgen -c -- "$cur"; compgen -f -- "$cur")"
        return
    fi
    case ${program##*/} in
    iodbg | vboard) _bsp_complete_words "${line[@]:$start}" ;;
    *)
        if declare -F _command_offset >/dev/null 2>&1; then
            _command_offset "$start"
        else
            _bsp_offer_files -f
        fi
        ;;
    esac
}

# Completes the last of a program's words: PROGRAM [WORD...]
_bsp_complete_words() {
    local line=("$@") help first value="" folder="" arguments=0 behind_dashes="" i word
    local command=("${1/#\~/$HOME}")
    help=$(_bsp_help "${command[@]}")
    first=$help
    for ((i = 1; i < $# - 1; i++)); do
        word=${line[i]}
        if [ -n "$value" ]; then
            value=
            continue
        fi
        if [ "$word" = -- ] && [ "${line[1]}" = run ]; then
            _bsp_complete_inner $((i + 1))
            return
        fi
        case $behind_dashes$word in
        --) behind_dashes=yes ;;
        -*)
            value=$(_bsp_option_value "$help" "$word")
            ;;
        *)
            if _bsp_names Subcommands "$help" all | grep -qxF -e "$word"; then
                command+=("$word")
                arguments=0
            else
                [ "$arguments" -ne 0 ] || folder=${folder:-${word/#\~/$HOME}}
                [ -z "$(_bsp_names Subcommands "$help")" ] || command+=("$word")
                arguments=$((arguments + 1))
                continue
            fi
            help=$(_bsp_help "${command[@]}")
            ;;
        esac
    done
    if [ -n "$value" ]; then
        _bsp_offer_value "${value%%$'\t'*}" "${value#*$'\t'}" "${command[0]}" "$folder"
        return
    fi
    case $behind_dashes$cur in
    -*)
        # Options of all of iodbg may follow every command.
        case ${command[0]##*/} in iodbg) help=$help$'\n'$first ;; esac
        _bsp_offer "$(_bsp_options "$help" | sort -u)"
        ;;
    *)
        word=$(_bsp_argument "$help" "$arguments")
        [ -n "$word" ] || _bsp_offer "$(_bsp_names Subcommands "$help")"
        [ -z "$word" ] ||
            _bsp_offer_value "${word%%$'\t'*}" "${word#*$'\t'}" "${command[0]}" "$folder"
        ;;
    esac
}

_bsp_tools() {
    local line=() before="" cur
    COMPREPLY=()
    _bsp_join_words
    cur=${line[${#line[@]} - 1]}
    _bsp_complete_words "${line[@]}"
}

complete -F _bsp_tools iodbg vboard
