#!/bin/sh
# Runs a fuzz target; what it finds lies in the folder.
# usage: run.sh PROGRAM FOLDER [OPTION|CORPUS...]
set -eu
program=$1 findings=$2
shift 2
# The fuzzer's own watch of memory is a thread that sleeps, which on a virtual board is the board's affair.
ASAN_OPTIONS=hard_rss_limit_mb=2048${ASAN_OPTIONS:+:$ASAN_OPTIONS}
export ASAN_OPTIONS
exec "$program" -timeout=20 -rss_limit_mb=0 -artifact_prefix="$findings/" "$@"
