#!/bin/bash
# Lets promtool and a parser of OpenMetrics judge the metrics of boards: well, with everything plugged, with a bus that is dead.
# usage: check-metrics.sh FOLDER-OF-TOOLS; iodbg and vboard are those in PATH

set -euo pipefail
tools=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# check NAME EXIT-CODE: the metrics of the board as it is.
check() {
    local code=0
    vboard run "$work/board" -- iodbg metrics "$work/$1.prom" >/dev/null 2>"$work/$1.log" || code=$?
    [ "$code" = "$2" ] || {
        cat "$work/$1.log"
        echo "iodbg metrics, $1: exit code $code, not $2"
        exit 1
    }
    "$tools/promtool" check metrics <"$work/$1.prom" || {
        echo "promtool refuses the metrics of: $1"
        exit 1
    }
    /usr/bin/python3 - "$work/$1.prom" <<'END' || {
import sys
from prometheus_client.openmetrics.parser import text_string_to_metric_families
families = list(text_string_to_metric_families(open(sys.argv[1]).read()))
assert len(families) > 5, families
assert {family.unit for family in families} >= {"seconds"}, families
END
        echo "no OpenMetrics: the metrics of: $1"
        exit 1
    }
    echo "ok    metrics, $1: $(grep -vc '^#' "$work/$1.prom") samples"
}

vboard create --model 0x0709 --time virtual "$work/board" >/dev/null
check well 0
vboard run "$work/board" -- iodbg poe init >/dev/null 2>&1
vboard set "$work/board" sfp.49.module=sr sfp.50.module=copper-mode4 \
    poe.3.device='class=4 requests=25500 draws=18000' fan.2.state=stuck
check busy 0
vboard fault "$work/board" add --device i2c --when from --effect no-answer >/dev/null
check dead-bus 1
