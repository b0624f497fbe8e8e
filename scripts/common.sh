# What the commands in this directory share. Sourced by bash scripts; sets the project's directory and the job count.

set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=${JOBS:-$(nproc)}

# section TITLE - a heading in the output
section() {
    printf '\n== %s\n' "$*"
}

# fail MESSAGE - ends the command
fail() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# quietly COMMAND… - runs a command and shows its output only when it fails
quietly() {
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    if [ "$status" -ne 0 ]; then
        cat "$log" >&2
    fi
    rm -f "$log"
    return "$status"
}

# build PRESET [TARGET…] - configures and builds in build/PRESET
build() {
    local preset=$1
    shift
    (cd "$root" && quietly cmake --preset "$preset") || return
    if [ -t 1 ]; then
        ninja -C "$root/build/$preset" -j "$jobs" "$@"
    else
        ninja -C "$root/build/$preset" -j "$jobs" --quiet "$@"
    fi
}
