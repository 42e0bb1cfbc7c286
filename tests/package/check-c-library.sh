#!/bin/bash
# Judges how new a C library the built library needs, by the versions of the symbols that it takes from it:
# as it is, and built once more without 64-bit time, for boards with an older one.
# usage: check-c-library.sh CMAKE SOURCE-FOLDER BUILD-FOLDER WORK-FOLDER C-COMPILER CXX-COMPILER TOOLCHAIN-FILE
#                           EMULATOR READELF WORD-BYTES

set -euo pipefail
readonly cmake=$1 source=$2 build=$3 work=$4 compiler=$5 cxx_compiler=$6 toolchain=$7 readelf=$9 word=${10}
read -r -a emulator <<<"$8"
# shellcheck source=tests/package/expect-same.sh
. "$source/tests/package/expect-same.sh"
readonly newest_needed=2.34 newest_without=2.28

# needed_of LIBRARY: the versions of the C library that it asks for, oldest first.
needed_of() {
    LC_ALL=C "$readelf" --version-info --wide "$1" | sed -nE 's/.*Name: GLIBC_([0-9.]+) .*/\1/p' | sort -Vu
}

# expect_at_most TITLE VERSION LIBRARY
expect_at_most() {
    local newest
    newest=$(needed_of "$3" | tail -n 1)
    expect_same "$1 needs glibc $2 at most: ${newest:-no version at all}" "$2" \
        "$(printf '%s\n' "${newest:-no version}" "$2" | sort -V | tail -n 1)"
}

# called_of LIBRARY: the calls that know the time.
called_of() {
    LC_ALL=C "$readelf" --dyn-syms --wide "$1" | grep -oE ' (__)?(mktime|clock_settime)(64)?@' |
        tr -d ' @' | sort | xargs
}

expect_at_most "the library" "$newest_needed" "$build/libbsp.so"
# On 64-bit machines time has always had 64 bits.
time_calls="clock_settime mktime"
[ "$word" -eq 8 ] || time_calls="__clock_settime64 __mktime64"
expect_same "it counts time in 64 bits" "$time_calls" "$(called_of "$build/libbsp.so")"

# That takes the compiler ten seconds: it is done for 32-bit boards, and for others before a release.
if [ "$word" -eq 4 ] || [ -n "${BSP_TEST_THOROUGH:-}" ]; then
    compilers=(-DCMAKE_C_COMPILER="$compiler" -DCMAKE_CXX_COMPILER="$cxx_compiler")
    [ -z "$toolchain" ] || compilers=(-DCMAKE_TOOLCHAIN_FILE="$toolchain")
    rm -rf "$work"
    mkdir -p "$work"
    "$cmake" -G Ninja -S "$source" -B "$work" "${compilers[@]}" -DBSP_TIME_64=OFF -DBSP_BUILD_IODBG=OFF \
        -DBSP_BUILD_VIRTUAL_BOARD=OFF -DBSP_BUILD_EXAMPLES=OFF -DBSP_WARNINGS_AS_ERRORS=ON >"$work.log"
    "$cmake" --build "$work" --target bsp >>"$work.log" || {
        cat "$work.log"
        exit 1
    }
    expect_at_most "without 64-bit time it" "$newest_without" "$work/libbsp.so"
    expect_same "it counts time as the machine does" "clock_settime mktime" "$(called_of "$work/libbsp.so")"

    # on_board LIBRARY-FOLDER TIME: how iodbg ends that sets the system clock of a new board from its chip
    # with that library, and whether the clock is still the host's.
    on_board() {
        local environment result=0 clock
        rm -rf "$work/board"
        "${emulator[@]}" "$build/bin/vboard" create --model 0x0709 "$work/board" >/dev/null
        "${emulator[@]}" "$build/bin/vboard" set "$work/board" rtc.time "$2" >/dev/null
        if [ ${#emulator[@]} -eq 0 ]; then
            LD_LIBRARY_PATH=$1 "$build/bin/vboard" run "$work/board" -- "$build/bin/iodbg" clock sync
        else
            read -r -a environment <<<"$("${emulator[@]}" "$build/bin/vboard" env --qemu "$work/board")"
            "${emulator[@]}" "${environment[@]}" -E LD_LIBRARY_PATH="$1" "$build/bin/iodbg" clock sync
        fi >"$work/said" 2>&1 || result=$?
        clock=$("${emulator[@]}" "$build/bin/vboard" get "$work/board" system-clock)
        [ "$clock" = host ] || clock="set"
        echo "$clock, exit $result"
    }
    readonly before="2037-12-31 23:59:00" after="2051-02-28 12:34:00"
    expect_same "a library with 64-bit time sets the clock before and after 2038" "set, exit 0; set, exit 0" \
        "$(on_board "$build" "$before"); $(on_board "$build" "$after")"
    late="host, exit 3" # which iodbg reads back
    [ "$word" -eq 4 ] || late="set, exit 0"
    expect_same "one without it leaves the clock alone after 2038" "set, exit 0; $late" \
        "$(on_board "$work" "$before"); $(on_board "$work" "$after")"
fi

exit "$((failures > 0))"
