#!/bin/sh
# Whether every call that the fuzzed library makes of the system has another name, under which it is
# answered. What only computes keeps its own.
# usage: check-calls.sh NM LIBRARY
set -eu
computing='atoi|mem(chr|cmp|cpy|move|set)|(__)?mktime(64)?|sn?printf|str(chr|cmp|len|ncmp|ncpy|nlen|str|toul)|vsnprintf'
ours='bsp.*|hostile_.*|io[A-Z].*|rtl8239.*|_Z.*'
compilers='__(asan|sanitizer|start|stop|ubsan)_.*|__[a-z]+di3|__errno_location|_GLOBAL_OFFSET_TABLE_|_gp_disp'
unanswered=$("$1" -u "$2" | awk '$1 == "U" { print $2 }' | sort -u |
    grep -vxE "$computing|$ours|$compilers" || true)
[ -z "$unanswered" ] || {
    echo "the library calls these, which fuzz/calls.txt does not name: $unanswered"
    exit 1
}
