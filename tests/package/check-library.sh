#!/bin/bash
# Judges the built library as a product ships it: what it needs, what it exports, what it runs when
# it is loaded.
# usage: check-library.sh SOURCE-FOLDER BUILD-FOLDER NM READELF

set -euo pipefail
readonly source=$1 build=$2 nm=$3 readelf=$4
readonly shared=$build/libbsp.so archive=$build/libbsp.a
# shellcheck source=tests/package/expect-same.sh
. "$source/tests/package/expect-same.sh"

export LC_ALL=C
dynamic=$("$readelf" -d "$shared")
archive_sections=$("$readelf" -S -W "$archive")
declared=$(sed -nE 's/^BSP_API.*[ *](\w+)\(.*/\1/p; s/^extern BSP_API.*[ *](\w+);/\1/p' \
    "$source/include/bsp.h" | sort)
listed=$(awk '/^BSP_/ { node = $1 } /^ +[A-Za-z0-9_]+;$/ { sub(";", "", $1); print $1 "@@" node }' \
    "$source/cmake/libbsp.map" | sort)
exported=$("$nm" -D --defined-only "$shared" | awk '$2 != "A" { print $3 }' | sort)
exported_names=$(cut -d @ -f 1 <<<"$exported" | sort)
called=$("$nm" -D --undefined-only "$shared")
# Under the names that source fortification and 64-bit time give them, too.
computing='(__)?(mem(chr|cmp|cpy|move|set)|v?sn?printf|str(chr|cmp|len|ncmp|ncpy|nlen|str|toul))(_chk)?'
computing+='|atoi|(__)?mktime(64)?|__errno_location'
printing='(__)?v?printf(_chk)?|puts|putchar|perror'

expect_same "the shared library needs the C library alone" "libc.so.6" \
    "$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")"
expect_same "its name is libbsp.so.1" "libbsp.so.1" \
    "$(sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' <<<"$dynamic")"
expect_same "it exports what the list of exports names, with its versions" "$listed" "$exported"
expect_same "the header declares what it exports" "$exported_names" "$declared"
expect_same "a program passes plain integers to all of it" "$exported_names" \
    "$( (sed -nE 's/.*<void>\((\w+)\(.*/\1/p' "$build/tests/package/plain_calls.inc" &&
        echo bspPoeRtl8239Driver) | sort)"
expect_same "whatever it calls of the system is recorded in tests, but what computes and what prints" "" \
    "$(sed -n 's/^ *U \([^@]*\).*/\1/p' <<<"$called" |
        grep -vxF "$(cut -d ' ' -f 1 "$source/tests/support/system_calls.txt")" |
        grep -vxE "$computing|$printing" || true)"
expect_same "it has no text relocations" "" "$(grep TEXTREL <<<"$dynamic" || true)"
expect_same "no object of it has static constructors or destructors" "" \
    "$(grep -E '\.(init_array|ctors|fini_array|dtors|preinit_array)' <<<"$archive_sections" || true)"
expect_same "no object of it has exception tables" "" \
    "$(grep -F .gcc_except_table <<<"$archive_sections" || true)"
expect_same "the archive has sections at all" "yes" \
    "$(grep -qF .text.bspDevIdGet <<<"$archive_sections" && echo yes)"

# What a person at a unit has no use for: answers that are the same on every board, single values of
# what iodbg reads at once, and forwarders of what it does under another name.
expect_same "iodbg reaches every function but these" \
    "$(printf '%s\n' ioBiosUpgrade ioBoardDescGet ioBoardDescSet ioBoardPowerInfoGet ioBoardSlotIdGet \
        ioCardIdGet ioCardTypeGet ioCpldUpgrade ioFrameTypeGet ioLaserAdvanceGet ioLaserBasicGet \
        ioLaserPhySet ioLaserQsfpGet ioLaserQsfpSet ioMfgDateGet ioMfgDateSet ioPoeInitStatusSet \
        ioPoePortCurrentGet ioPoePortPowerGet ioPoePortVoltageGet ioProductIdGet ioRebootEx \
        ioSlotIdGet ioSlotPowerStateSet ioSlotPresentGet ioSlotTypeGet ioWatchdogStart)" \
    "$(comm -23 <(grep '^io' <<<"$exported_names") \
        <("$nm" -D --undefined-only "$build/bin/iodbg" | sed -nE 's/.* (io|bsp)([A-Z]\w+).*/io\2/p' |
            sort -u))"

# What no operation leads to is not linked in, and has to say why it is there.
builders=$(grep -oE '^int32_t rtl8239Cmd\w+' "$source/poe/rtl8239/commands.h" | cut -d ' ' -f 2 | sort)
linked=$("$nm" "$shared" | awk '{ print $NF }' | sort)
expect_same "builders of commands that nothing sends say what they are for" \
    "$(comm -23 <(echo "$builders") <(echo "$linked"))" \
    "$(grep -A1 -E '^/\*\* For ' "$source/poe/rtl8239/commands.h" |
        sed -nE 's/^int32_t (rtl8239Cmd\w+).*/\1/p' | sort)"

exit "$((failures > 0))"
