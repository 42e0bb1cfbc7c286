#!/bin/bash
# Prometheus and the node exporter watch a virtual board through the textfile collector; a fan breaks,
# and the alert fires. Both listen on this machine alone, on ports that are free.
# usage: watch-board.sh FOLDER-OF-TOOLS FOLDER-OF-RULES; iodbg and vboard are those in PATH

set -euo pipefail
tools=$1
rules=$(realpath "$2")
readonly patience=180 # seconds; about 80 on an idle machine, 60 of them the rule's own
work=$(mktemp -d)
started=()
finish() {
    for process in ${started[@]+"${started[@]}"}; do
        kill "$process" 2>/dev/null || true
        wait "$process" 2>/dev/null || true
    done
    rm -rf "$work"
}
trap finish EXIT

give_up() {
    echo "$*"
    tail -n 20 "$work"/*.log
    exit 1
}

# wait_for SECONDS COMMAND...: until it succeeds.
wait_for() {
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        ((SECONDS < end)) || return 1
        sleep 1
    done
}

free_port() {
    python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# fetch PORT PATH: what a server answers.
fetch() {
    python3 -c 'import sys, urllib.request
sys.stdout.write(urllib.request.urlopen(f"http://127.0.0.1:{sys.argv[1]}{sys.argv[2]}", timeout=10).read().decode())' \
        "$@" 2>/dev/null
}

# Another program may take a port before its server does.
# start NAME PATH COMMAND...: @port stands for the port, which is left in the variable port.
start() {
    local name=$1 path=$2
    shift 2
    for _ in 1 2 3; do
        port=$(free_port)
        "${@//@port/$port}" >"$work/$name.log" 2>&1 &
        started+=("$!")
        if wait_for 30 answers_or_gone "$!" "$path" && kill -0 "$!" 2>/dev/null; then
            return
        fi
        kill "$!" 2>/dev/null || true
        wait "$!" || true
        unset 'started[-1]'
    done
    give_up "$name does not start"
}

answers_or_gone() {
    fetch "$port" "$2" >/dev/null || ! kill -0 "$1" 2>/dev/null
}

write_metrics() {
    vboard run "$work/board" -- iodbg metrics "$work/textfile/switch.prom" >/dev/null
}

# alert STATE: whether the alert of a fan that stands still is pending, firing ...
alert() {
    write_metrics
    fetch "$prometheus" /api/v1/alerts | python3 -c 'import json, sys
found = [(a["labels"].get("code"), a["labels"].get("index"), a["state"])
         for a in json.load(sys.stdin)["data"]["alerts"]]
sys.exit(("fan-stands-still", "2", sys.argv[1]) not in found)' "$1"
}

is_calm() {
    write_metrics
    fetch "$prometheus" '/api/v1/query?query=switch_fan_speed_rpm' | python3 -c 'import json, sys
sys.exit(len(json.load(sys.stdin)["data"]["result"]) != 2)' &&
        fetch "$prometheus" /api/v1/alerts | grep '"alerts":\[\]' >"$work/found"
}

mkdir "$work/textfile"
vboard create --model 0x0709 --time virtual "$work/board" >/dev/null
write_metrics

start exporter /metrics "$tools/prometheus-node-exporter" --collector.disable-defaults \
    --collector.textfile --collector.textfile.directory="$work/textfile" \
    --web.listen-address=127.0.0.1:@port
fetch "$port" /metrics | grep '^node_textfile_scrape_error 0$' >"$work/found" ||
    give_up "the collector refuses the file"
fetch "$port" /metrics | grep '^switch_fan_speed_rpm{fan="2"} 2400$' >"$work/found" ||
    give_up "the node exporter does not tell a fan's speed"
echo "ok    the node exporter takes the file"

cat >"$work/prometheus.yml" <<END
global: {scrape_interval: 2s, evaluation_interval: 2s}
rule_files: ["$rules/switch.rules.yml"]
scrape_configs:
  - job_name: switch
    static_configs: [{targets: ["127.0.0.1:$port"]}]
END
start prometheus /-/ready "$tools/prometheus" --config.file="$work/prometheus.yml" \
    --storage.tsdb.path="$work/data" --web.listen-address=127.0.0.1:@port
prometheus=$port

wait_for "$patience" is_calm || give_up "Prometheus does not see a board that is well"
echo "ok    Prometheus sees the board, and no alert"

vboard set "$work/board" fan.2.state=stuck
wait_for "$patience" alert pending || give_up "a fan stands still, and no alert is pending"
wait_for "$patience" alert firing || give_up "a fan stands still, and no alert fires"
echo "ok    a fan breaks, and the alert fires"

vboard set "$work/board" fan.2.state=good
wait_for "$patience" is_calm || give_up "the fan turns again, and the alert stays"
echo "ok    it turns again, and the alert ends"
