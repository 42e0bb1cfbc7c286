#!/bin/bash
# Sees the comparison with released interfaces fail where it has to: descriptions of the built control
# library are changed as if a released version had been otherwise.
# usage: check-abi-gate.sh LIBRARY HEADERS WORK-FOLDER

set -euo pipefail
here=$(dirname "$0")
# shellcheck source=tests/package/describe-abi.sh
. "$here/describe-abi.sh"
readonly here library=$1 headers=$2 work=$3

rm -rf "$work"
mkdir -p "$work"
cp "$here/abi/libvboard-control/suppressions" "$work"
describe_abi "$library" "$headers" "$work/now.abi"

# expect RESULT WHAT SED-PROGRAM: what becomes of a library whose released version was so.
expect() {
    local result=0 released=$work/$2.abi
    sed -E "$3" "$work/now.abi" >"$released"
    [ "$2" = itself ] || ! cmp -s "$work/now.abi" "$released" || {
        echo "the description for '$2' could not be made"
        exit 1
    }
    "$here/check-abi.sh" "$library" "$headers" "$released" >"$work/$2.log" || result=$?
    [ "$result" -eq "$1" ] || {
        cat "$work/$2.log"
        echo "'$2' answers $result and not $1"
        exit 1
    }
    echo "ok    $2"
}

# without_last STRUCTURE: the program that takes its last member out.
without_last() {
    local members="/class-decl name='$1'/,/<\\/class-decl>/" offset
    offset=$(sed -nE "$members s/.*layout-offset-in-bits='([0-9]+)'.*/\\1/p" "$work/now.abi" | tail -n 1)
    printf '%s' "$members {
        s/(class-decl .*size-in-bits=)'[0-9]+'/\\1'$offset'/
        /layout-offset-in-bits='$offset'/,/<\\/data-member>/ d
    }"
}

expect 0 "itself" ""
expect 0 "a function less" \
    "/elf-symbol name='vboardWait'/ d; /function-decl name='vboardWait'/,/<\\/function-decl>/ d"
expect 0 "options without the last member" "$(without_last VBoardOptions)"
expect 1 "a function more" "/elf-symbol name='vboardWait'/ { p; s/vboardWait/vboardListen/ }"
expect 1 "a parameter less" "/function-decl name='vboardWait'/,/<\\/function-decl>/ { /name='timeout'/ d }"
expect 1 "a property without the last member" "$(without_last VBoardProperty)"
