# shellcheck shell=bash
# Describes the binary interface of a library, and compares descriptions. Sourced, not run.

# describe_abi LIBRARY HEADERS DESCRIPTION: of types only what the folder of public headers has.
describe_abi() {
    # Without it only names would be described, and nothing would tell.
    readelf --section-headers --wide "$1" | grep -qF .debug_info || {
        echo "WRONG $1 has no debug information: its types cannot be compared"
        return 1
    }
    abidw --headers-dir "$2" --drop-private-types --exported-interfaces-only --drop-undefined-syms \
        --no-corpus-path --no-comp-dir-path --no-show-locs --out-file "$3" "$1"
}

# compare_abi RELEASED NOW [OPTION...]: two descriptions, but for what "suppressions" beside the first allows. What is
# new is a difference for abidiff, too, unless it gets --no-added-syms.
compare_abi() {
    local released=$1 now=$2 options=() suppressions
    shift 2
    suppressions=$(dirname "$released")/suppressions
    [ ! -e "$suppressions" ] || options=(--suppressions "$suppressions")
    abidiff "$@" "${options[@]}" "$released" "$now"
}
