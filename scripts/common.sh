# shellcheck shell=bash
# What the scripts share: messages, and stopping at the first error. Sourced, not run.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() {
    printf '\n== %s\n' "$*"
}

fail() {
    printf '\n%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

trap 'fail "stopped at: $BASH_COMMAND (line $LINENO)"' ERR

# become_root COMMAND: leaves in the array as_root what the command must be preceded by.
# shellcheck disable=SC2034 # the array is its answer
become_root() {
    as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "not root and no sudo; as root run: $*"
        as_root=(sudo)
    fi
}

# configure PRESET: quiet unless something goes wrong.
configure() {
    mkdir -p build
    say "$1: configuring (build/$1)"
    cmake --preset "$1" >"build/$1.configure.log" 2>&1 || {
        cat "build/$1.configure.log" >&2
        fail "the configuration '$1' does not configure; see above"
    }
}

# configure_and_build PRESET [TARGET...]
configure_and_build() {
    local preset=$1 targets=()
    shift
    (($# == 0)) || targets=(--target "$@")
    configure "$preset"
    say "$preset: building"
    cmake --build --preset "$preset" ${targets[@]+"${targets[@]}"} ||
        fail "the configuration '$preset' does not build; see above"
}

# beside LOG COMMAND...: runs it beside what follows. It and what it has started end with the script, whatever ends that.
beside() {
    beside_log=$1
    shift
    setsid "$@" >"$beside_log" 2>&1 &
    beside_group=$!
    trap 'kill -- "-$beside_group" 2>/dev/null || true' EXIT
}

# end_of_beside: waits for it and shows what it has said; its exit code.
end_of_beside() {
    local result=0
    wait "$beside_group" || result=$?
    trap - EXIT
    cat "$beside_log"
    return "$result"
}
