#!/bin/bash
# scripts/package refuses what it cannot do before it does anything, and says what to do instead.
# usage: check-package-words.sh SOURCE-FOLDER WORK-FOLDER

set -euo pipefail
readonly source=$1 work=$2
# shellcheck source=tests/package/expect-same.sh
. "$source/tests/package/expect-same.sh"

rm -rf "$work"
mkdir -p "$work/full"
echo "a letter" >"$work/full/letter.deb"

# expect_refused MESSAGE WORD...: as the last line
expect_refused() {
    local message=$1 status=0
    shift
    "$source/scripts/package" "$@" >"$work/out" 2>"$work/errors" || status=$?
    expect_same "'$*' is refused" "1 package: $message" "$status $(tail -n 1 "$work/errors")"
    expect_same "before anything is done" "" "$(cat "$work/out")"
}
readonly usage="usage: scripts/package [--check] [--output DIR] [--target PRESET] [--as-version VERSION]"
expect_refused "'--chekc' is not known; $usage" --chekc
expect_refused "'mips' is not known; $usage" mips
expect_refused "--output needs a value; $usage" --check --output
expect_refused "'vax' is no configuration of a target; 'cmake --list-presets' shows all" --target vax
expect_refused "'release' is no configuration of a target; 'cmake --list-presets' shows all" --target release
expect_refused "'1.0' is no version; write one as 1.0.0" --as-version 1.0
expect_refused "'1.0.0 -1' is no version; write one as 1.0.0" --as-version "1.0.0 -1"
expect_refused "$work/full holds something else than packages; name an empty or a new folder" --output "$work/full"
expect_same "what was there is there" "a letter" "$(cat "$work/full/letter.deb")"

# A tree of its own, of which one file is not committed.
git -c init.defaultBranch=main init -q "$work/tree"
mkdir -p "$work/tree/cmake/toolchains" "$work/tree/scripts"
cp "$source"/scripts/{package,common.sh} "$work/tree/scripts"
cp "$source"/cmake/toolchains/mips-linux-gnu.cmake "$work/tree/cmake/toolchains"
git -C "$work/tree" add .
git -C "$work/tree" -c user.name=tester -c user.email=tester@localhost commit -q -m "Begin"
echo more >"$work/tree/forgotten"
status=0
"$work/tree/scripts/package" >"$work/out" 2>"$work/errors" || status=$?
expect_same "what is not committed is named" "1
package: packages are made of a commit, and these files differ from it; commit them, or put
them away (git stash --include-untracked):
?? forgotten" "$status$(cat "$work/errors")"
expect_same "before anything is done" "cmake,forgotten,scripts" "$(cat "$work/out")$(cd "$work/tree" && printf "%s\n" * | paste -sd ,)"
exit "$((failures > 0))"
