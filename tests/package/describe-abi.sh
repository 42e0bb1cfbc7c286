# shellcheck shell=bash
# Describes the binary interface of a library, for those who compare it. Sourced, not run.

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
