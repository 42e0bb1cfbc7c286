#!/bin/bash
# Judges the control library as it is shipped: what it exports, and what its header declares.
# usage: check-control.sh SOURCE-FOLDER LIBRARY NM READELF

set -euo pipefail
readonly source=$1 library=$2 nm=$3 readelf=$4
# shellcheck source=tests/package/expect-same.sh
. "$source/tests/package/expect-same.sh"

export LC_ALL=C
dynamic=$("$readelf" -d "$library")
declared=$(sed -nE 's/^VBOARD_API.*[ *](vboard\w+)\(.*/\1/p' "$source/virtual_board/include/vboard.h" | sort)
listed=$(sed -nE 's/^ +(vboard\w+);$/\1@@VBOARD_1/p' "$source/cmake/libvboard-control.map" | sort)
exported=$("$nm" -D -g --defined-only "$library" | awk '$2 != "A" { print $3 }' | sort)

expect_same "its name is libvboard-control.so.1" "libvboard-control.so.1" \
    "$(sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' <<<"$dynamic")"
expect_same "it exports what the list of exports names, with its version" "$listed" "$exported"
expect_same "the header declares what it exports" "$(cut -d @ -f 1 <<<"$exported" | sort)" "$declared"
expect_same "it has no text relocations" "" "$(grep TEXTREL <<<"$dynamic" || true)"
[ "$failures" -eq 0 ]
