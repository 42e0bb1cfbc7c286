#!/bin/bash
# Comparisons of scripts that judge what was built.

failures=0

# expect_same TITLE EXPECTED ACTUAL
expect_same() {
    if [ "$2" = "$3" ]; then
        echo "ok    $1"
    else
        echo "WRONG $1"
        diff <(printf '%s\n' "$2") <(printf '%s\n' "$3") || true
        failures=$((failures + 1))
    fi
}
