#!/bin/sh
# Runs a fuzz target over its seeds and then on from them for a moment; what it finds lies in the folder.
# usage: run-seeds.sh PROGRAM SEEDS FOLDER
set -eu
program=$1 seeds=$2 folder=$3
mkdir -p "$folder"
find "$seeds" -type f >"$folder/names"
sort -o "$folder/names" "$folder/names"
count=$(wc -l <"$folder/names")
[ "$count" -gt 0 ] || {
    echo "there are no seeds in $seeds"
    exit 1
}
# Given as a folder, the seeds would get company. A line's end would belong to the last name.
printf %s "$(paste -s -d , "$folder/names")" >"$folder/seeds"
status=0
"$(dirname "$0")/run.sh" "$program" "$folder" -seed=1 -runs="$((count + 100))" -max_total_time=1 \
    -verbosity=0 \
    -seed_inputs="@$folder/seeds" >"$folder/log" 2>&1 || status=$?
cat "$folder/log"
[ "$status" -eq 0 ] || exit "$status"
# The fuzzer passes over files that it cannot read, and those without a byte.
grep -q "seed corpus: files: $count " "$folder/log" || {
    echo "not all of the $count files in $seeds were run: is one of them empty?"
    exit 1
}
