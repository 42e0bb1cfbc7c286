#!/bin/bash
# Installs into a folder of its own and builds a small program against the result both ways that an
# installed tree offers, then runs it.
# usage: check-install.sh CMAKE SOURCE-FOLDER BUILD-FOLDER WORK-FOLDER C-COMPILER C-FLAGS TOOLCHAIN-FILE EMULATOR

set -euo pipefail
readonly cmake=$1 source=$2 build=$3 work=$4 compiler=$5 toolchain=$7
read -r -a flags <<<"$6"
read -r -a emulator <<<"$8"
readonly consumer=$source/tests/package/consumer prefix=$work/prefix
readonly expected="CRC-32 of 123456789: CBF43926, status of a null record: 1001"

rm -rf "$work"
mkdir -p "$work"
"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log"
libraries=$(dirname "$(find "$prefix" -name libbsp.so)")

# check_output HOW PROGRAM: what it says where nothing but the program tells where the library is.
check_output() {
    local actual
    actual=$("${emulator[@]}" "$2")
    [ "$actual" = "$expected" ] || {
        echo "built with $1 it says: $actual"
        exit 1
    }
    echo "ok    a program built with $1"
}

if [ -n "$toolchain" ]; then
    toolchain_option=(-DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_FIND_ROOT_PATH="$prefix")
else
    toolchain_option=(-DCMAKE_C_COMPILER="$compiler")
fi
# has_own_library PROGRAM: whether the library is in the program itself.
has_own_library() {
    ! LC_ALL=C readelf -d "$1" | grep -q 'NEEDED.*libbsp'
}

for language in "" _cxx; do
    "$cmake" -G Ninja -S "$consumer$language" -B "$work/consumer$language" "${toolchain_option[@]}" \
        -DCMAKE_PREFIX_PATH="$prefix" >"$work/consumer$language.log"
    "$cmake" --build "$work/consumer$language" >>"$work/consumer$language.log"
done
check_output "find_package(bsp), bsp::bsp in C" "$work/consumer/consumer"
check_output "find_package(bsp), bsp::bsp_static in C" "$work/consumer/consumer_static"
check_output "find_package(bsp), bsp::bsp in C++" "$work/consumer_cxx/consumer_bsp"
check_output "find_package(bsp), bsp::bsp_static in C++" "$work/consumer_cxx/consumer_bsp_static"
has_own_library "$work/consumer/consumer_static"
has_own_library "$work/consumer_cxx/consumer_bsp_static"
! has_own_library "$work/consumer/consumer" || exit 1
echo "ok    bsp::bsp_static is linked into programs"

"$cmake" -G Ninja -S "$source/examples" -B "$work/examples" "${toolchain_option[@]}" \
    -DCMAKE_PREFIX_PATH="$prefix" >"$work/examples.log"
"$cmake" --build "$work/examples" >>"$work/examples.log"
usage=$(LD_LIBRARY_PATH=$libraries "${emulator[@]}" "$work/examples/poe_priority" 2>&1 >/dev/null || true)
[ "$usage" = "usage: poe_priority BUDGET_WATTS PORT=PRIORITY..." ] || {
    echo "the example says: $usage"
    exit 1
}
echo "ok    the examples build by themselves"

PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --print-errors --cflags --libs bsp >"$work/pkg-config"
read -r -a bsp_flags <"$work/pkg-config"
"$compiler" "${flags[@]}" -std=c99 -Wall -Werror "$consumer/consumer.c" "${bsp_flags[@]}" \
    -Wl,-rpath,"$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --variable=libdir bsp)" \
    -o "$work/consumer-pc"
check_output "pkg-config" "$work/consumer-pc"

reference=$prefix/share/doc/bsp/html/index.html
[ -e "$build/reference/html" ] && [ ! -s "$reference" ] && {
    echo "the reference was built, and is not installed"
    exit 1
}
echo "ok    the reference is installed where it was built"

for program in iodbg vboard; do
    "${emulator[@]}" "$prefix/bin/$program" --help >/dev/null
    echo "ok    installed $program starts"
done

for program in iodbg vboard; do
    completion=$prefix/share/bash-completion/completions/$program
    bash -c '. "$1" && complete -p "$2"' bash "$completion" "$program" >/dev/null
    echo "ok    installed completion of $program can be loaded"
done

# expect_page WHAT FILE: whether what is installed has its manual page, which names it.
expect_page() {
    grep -qsx "\.Nm $1" "$2" || {
        echo "$1 is installed without its manual page, $2"
        exit 1
    }
    echo "ok    installed manual page of $1"
}
for program in "$prefix"/bin/*; do
    expect_page "${program##*/}" "$prefix/share/man/man1/${program##*/}.1"
done
for header in "$prefix"/include/*; do
    expect_page "${header##*/}" "$prefix/share/man/man3/${header##*/}.3"
done

for checker in vboard.supp vboard-tsan.supp; do
    cmp "$source/virtual_board/checkers/$checker" "$prefix/share/bsp/$checker"
done
echo "ok    installed suppressions for checkers of threads"

diff -r "$source/examples/scenarios" "$prefix/share/bsp/scenarios"
echo "ok    installed scenarios"

cmp "$source/monitoring/switch.rules.yml" "$prefix/share/bsp/switch.rules.yml"
echo "ok    installed rules for alerts"

documents=$prefix/share/doc/bsp
grep -q '^## JSON$' "$documents/iodbg.md"
for document in "$source"/docs/*.md "$source"/docs/*.json; do
    [ "$(basename "$document")" != reference.md ] || continue # a part of the HTML reference
    cmp "$document" "$documents/$(basename "$document")"
done
cmp "$source/CHANGELOG.md" "$documents/CHANGELOG.md"
version=$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --modversion bsp)
grep -qxE "## ($version|Unreleased)" "$documents/CHANGELOG.md" # what has changed in this version
echo "ok    installed documents, the keys of JSON and the version's changes among them"

"${emulator[@]}" "$prefix/bin/vboard" create --model 0x0709 "$work/board"
VBOARD_DIR=$work/board "$libraries/vboard-tools/flash_erase" -q /dev/mtd4 0 1
erased=$("${emulator[@]}" "$prefix/bin/vboard" get "$work/board" flash.4.erase-counts)
[ "$erased" = "min=0 max=1 total=1" ] || {
    echo "the installed flash_erase left $erased"
    exit 1
}
echo "ok    installed tools work on a board"

needed=$(LC_ALL=C readelf -d "$libraries/libbsp-trace.so.1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
    grep -v '^ld' | xargs)
[ "$needed" = "libc.so.6" ] || {
    echo "the library that is preloaded for 'iodbg trace' needs $needed"
    exit 1
}
# Emulated programs cannot execute each other.
if [ ${#emulator[@]} -eq 0 ]; then
    traced=$("$prefix/bin/vboard" run "$work/board" -- "$prefix/bin/iodbg" trace -- \
        "$prefix/bin/iodbg" cpld get 1 2>&1 >/dev/null)
    [[ $traced == *"CPLD read  reg 1 (device id) = 0x0709" ]] || {
        echo "the installed iodbg trace tells $traced"
        exit 1
    }
fi
echo "ok    installed iodbg trace, whose library needs the C library alone"

# check_board HOW PROGRAM: a program that makes a board and waits for a fan to stand.
check_board() {
    rm -rf "$work/held"
    local said
    said=$(LD_LIBRARY_PATH=$libraries "${emulator[@]}" "$2" "$work/held")
    [ "$said" = "stands after 4.000000000 seconds" ] || {
        echo "built with $1 it says: $said"
        exit 1
    }
    echo "ok    a program that holds a board, built with $1"
}
"$cmake" -G Ninja -S "${consumer}_vboard" -B "$work/consumer_vboard" "${toolchain_option[@]}" \
    -DCMAKE_PREFIX_PATH="$prefix" >"$work/consumer_vboard.log"
"$cmake" --build "$work/consumer_vboard" >>"$work/consumer_vboard.log"
check_board "find_package(vboard)" "$work/consumer_vboard/consumer_vboard"
PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --print-errors --cflags --libs vboard >"$work/pkg-config"
read -r -a vboard_flags <"$work/pkg-config"
"$compiler" "${flags[@]}" -std=c99 -Wall -Werror "${consumer}_vboard/consumer.c" "${vboard_flags[@]}" \
    -o "$work/consumer_vboard-pc"
check_board "pkg-config" "$work/consumer_vboard-pc"

packages=$(find "$prefix" -path '*-packages/vboard/__init__.py' -printf '%h/..')
if [ -z "$toolchain" ]; then
    speed=$(PYTHONPATH=$packages PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -c '
from importlib.metadata import entry_points
from vboard import Board
[plugin] = entry_points(group="pytest11", name="vboard")
with Board.create("0x0709") as board:
    print(plugin.value, board["fan.1.speed"])')
    [ "$speed" = "vboard.pytest_plugin 2400" ] || {
        echo "the installed Python package says: $speed"
        exit 1
    }
    echo "ok    the installed Python package holds a board, and pytest finds its plugin"

    called=$(PYTHONPATH=$packages PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -c '
import os
from importlib.metadata import version
import bsp
from bsp import _library
crc = bsp.bsp_crc32_cal(0, b"123456789")
print(version("bsp"), f"{crc:X}", os.path.realpath(_library.library._name))')
    [ "$called" = "$version CBF43926 $(realpath "$libraries/libbsp.so.1")" ] || {
        echo "the installed Python package of the library says: $called"
        exit 1
    }
    echo "ok    the installed Python package calls the installed library"
fi
