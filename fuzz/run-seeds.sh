#!/bin/sh
# Runs a fuzz target over its seeds and then on from them for a moment; what it finds lies in the folder.
# usage: run-seeds.sh PROGRAM SEEDS FOLDER
set -eu
mkdir -p "$3"
# Given as a folder, the seeds would get company.
find "$2" -type f | sort | paste -s -d , >"$3/seeds"
exec "$(dirname "$0")/run.sh" "$1" "$3" -seed=1 -max_total_time=1 -verbosity=0 -seed_inputs="@$3/seeds"
