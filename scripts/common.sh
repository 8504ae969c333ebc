# Sourced by the other scripts; the working directory becomes the root of the checkout.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

heading() { printf '\n== %s ==\n' "$*"; }

# Runs a command without its output, which is shown only when the command fails.
quietly() {
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    [ "$status" -eq 0 ] || { cat "$log"; printf 'failed with status %s: %s\n' "$status" "$*"; } >&2
    rm -f "$log"
    return "$status"
}

# build PRESET [TARGET]...: configures and builds; one job per core, for the presets would take more.
build() {
    local preset=$1
    shift
    quietly cmake --preset "$preset"
    quietly cmake --build --preset "$preset" --parallel "$(nproc)" ${1:+--target "$@"}
}
