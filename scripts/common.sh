# Shared by the scripts: sourced, never run. Leaves the caller in the project's root.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '\n== %s\n' "$*"; }

# run_quietly LOG COMMAND...: prints nothing unless the command fails, then the end of its output.
run_quietly() {
    local log=$1
    shift
    mkdir -p "$(dirname "$log")"
    if ! "$@" >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        echo "failed: $* (whole output: $log)" >&2
        return 1
    fi
}

# build_preset PRESET [TARGET...]: configures and builds one preset. What is built once, from scratch, is built in batches
# of files; who works here wants a file that changed compiled alone.
build_preset() {
    local preset=$1 options=()
    shift
    [ "${CI:-}" != true ] || options=(-DZEL_BATCHES=ON)
    run_quietly "build/$preset.configure.log" cmake --preset "$preset" "${options[@]}"
    local targets=()
    [ $# -eq 0 ] || targets=(--target "$@")
    run_quietly "build/$preset.build.log" cmake --build "build/$preset" "${targets[@]}"
}
