# shellcheck shell=bash
# Sourced by the other scripts that build: `root`, the checkout, `jobs`, and the functions below.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
jobs=$(nproc)

say() { printf '%s: %s\n' "$(basename "$0" .sh)" "$*" >&2; }

# quietly LOG COMMAND...: the output goes to the log, and to the terminal when the command fails.
quietly()
{
    local log=$1
    shift
    "$@" >"$log" 2>&1 </dev/null && return
    cat "$log" >&2
    say "failed: $* (log: $log)"
    return 1
}

# A build folder that was copied from elsewhere, or never finished its configuration, is made anew.
configure_preset()
{
    local preset=$1 folder=$root/build/$1
    if [ -e "$folder/build.ninja" ] && grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt"; then
        return
    fi
    say "configuring $preset; its first build takes some minutes"
    (cd "$root" && quietly "$folder/configure.log" cmake --preset "$preset" --fresh)
}

# build_preset PRESET [TARGET...]: configures when that is needed, and builds; one at a time.
build_preset()
{
    local preset=$1 folder=$root/build/$1
    shift
    mkdir -p "$folder" || return
    (
        flock 9 || exit
        configure_preset "$preset" || exit
        quietly "$folder/build.log" cmake --build "$folder" -j "$jobs" ${1:+--target "$@"}
    ) 9>"$folder/.lock"
}
