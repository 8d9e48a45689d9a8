#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test: under the address and
# undefined-behaviour sanitizers, under the thread sanitizer those that have threads
# (test.sh --all: every one, which takes some ten minutes more), and last in the ordinary
# debug build, so that the summary of that run stands at the end. Ends with 1 when anything failed.
set -uo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

threads=tsan-threads
case ${1-} in
    "") ;;
    --all) threads=tsan ;;
    *) say "unknown word $1: test.sh [--all]"; exit 64 ;;
esac
failed=()

stage()
{
    local name=$1
    shift
    "$@" && return
    failed+=("$name")
    return 1
}

# Many tests wait for a while more than they compute: twice as many at once as there are cores.
run_tests() { (cd "$root" && ctest --preset "$1" -j "$((2 * jobs))" --no-tests=error --timeout 300 </dev/null); }

# The tests that failed as ctest names them, and the cases of those that are suites.
failures()
{
    {
        sed -n '/The following tests FAILED/,$ s/^[[:space:]]*[0-9]* - //p' "$1"
        sed -nE 's/^\[  FAILED  \] ([^ ,]+\.[^ ,]+).*/\1/p' "$1" | sort -u
    } | paste -sd, -
}

sanitized()
{
    local preset=$1
    say "building and testing $preset"
    stage "build of $preset" build_preset "$preset" || return 0
    local log=$root/build/$preset/test.log
    if ! stage "tests of $preset" quietly "$log" run_tests "$preset"; then
        failed+=("$(failures "$log")")
        return 0
    fi
    grep -E 'tests passed' "$log"
}

"$root/scripts/install-deps.sh" test || exit 1
sanitized asan
sanitized "$threads"
say "building and testing dev"
stage "build of dev" build_preset dev && stage "tests of dev" run_tests dev
if [ "${#failed[@]}" -ne 0 ]; then
    say "FAILED:$(printf ' [%s]' "${failed[@]}")"
    exit 1
fi
