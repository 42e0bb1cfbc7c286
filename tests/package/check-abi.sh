#!/bin/bash
# Compares the built library with the binary interface of released versions: programs that were linked
# to one of them must run with this library as it is. What is new may be there.
# usage: check-abi.sh LIBRARY HEADERS DESCRIPTION...
# Beside the descriptions 'suppressions' tells what may change.

set -euo pipefail
# shellcheck source=tests/package/describe-abi.sh
. "$(dirname "$0")/describe-abi.sh"
readonly library=$1 headers=$2
shift 2

now=$(mktemp)
trap 'rm -f "$now"' EXIT
describe_abi "$library" "$headers" "$now"

for description in "$@"; do
    if difference=$(compare_abi "$description" "$now" --no-added-syms); then
        echo "ok    $(basename "$description" .abi): $(grep -c '<elf-symbol name=' "$description") symbols"
    else
        echo "WRONG $(basename "$description" .abi): programs that use that version would break"
        echo "$difference"
        exit 1
    fi
done
