#!/bin/bash
# Looks for the second controller in what is shipped: no name of it, and so no row or symbol, is there.
# usage: check-product.sh PROGRAM-THAT-HAS-IT FILE...

set -euo pipefail
readonly name=quill program=$1
shift

# Else nothing would be found wherever it was.
grep -qia "$name" "$program" || {
    echo "WRONG $program does not have it: the name that is looked for is another"
    exit 1
}
for file in "$@"; do
    if [ ! -s "$file" ] || grep -qia "$name" "$file"; then
        echo "WRONG $file is not there, or has the second controller"
        exit 1
    fi
    echo "ok    $file has nothing of it"
done
