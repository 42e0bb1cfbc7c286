#!/bin/bash
# Compares the built library with the binary interface of released versions: programs that were linked
# to one of them must run with this library as it is. What is new may be there.
# usage: check-abi.sh LIBRARY DESCRIPTION...

set -euo pipefail
readonly library=$1
shift

# Without it only names would be compared, and nothing would tell.
if ! readelf --section-headers --wide "$library" | grep -qF .debug_info; then
    echo "WRONG $library has no debug information: its types cannot be compared"
    exit 1
fi

for description in "$@"; do
    # An addition is a difference for abidiff, too, unless it is told to look past it.
    if difference=$(abidiff --no-added-syms "$description" "$library"); then
        echo "ok    $(basename "$description" .abi): $(grep -c '<elf-symbol name=' "$description") symbols"
    else
        echo "WRONG $(basename "$description" .abi): programs that use that version would break"
        echo "$difference"
        exit 1
    fi
done
