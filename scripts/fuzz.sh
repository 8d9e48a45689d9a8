#!/usr/bin/env bash
# Fuzzes what reads texts from outside: fuzz.sh [SECONDS] [TARGET...]
#   SECONDS  for each target (default 60)
#   TARGET   json_text, attribute_registry ... (default all of them)
# Installs what is missing and builds with clang's libFuzzer. New inputs are kept in
# build/fuzz/found/TARGET, so that the next run goes on from there. Ends with 1 when a
# target broke, and says which and where its input lies; mended, such a file belongs into
# tests/fuzz/regressions/TARGET and into the list in tests/fuzz/CMakeLists.txt.
set -uo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

build=$root/build/fuzz
texts=$root/tests/fuzz
largest_input=8192
slowest_input=10 # seconds, sanitizers included
most_memory=2048 # MiB

# The line of a target in tests/fuzz/CMakeLists.txt names its dictionary.
dictionary_of() { sed -n "s/^tavrine_fuzz($1 .*DICTIONARY \([a-z]*\).*/\1/p" "$texts/CMakeLists.txt"; }

fuzz()
{
    local target=$1 seconds=$2 found=$build/found/$1 crashes=$build/crashes/$1 log=$build/$1.log
    local dictionary folders
    dictionary=$(dictionary_of "$target")
    mkdir -p "$found" "$crashes"
    folders=("$found" "$texts/corpus/$target")
    [ ! -d "$texts/regressions/$target" ] || folders+=("$texts/regressions/$target")
    say "$target for $seconds s"
    if "$build/bin/${target}_fuzz" "-max_total_time=$seconds" "-max_len=$largest_input" "-timeout=$slowest_input" \
        "-rss_limit_mb=$most_memory" "-artifact_prefix=$crashes/" -print_final_stats=1 -print_funcs=0 \
        ${dictionary:+"-dict=$texts/dictionaries/$dictionary.dict"} "${folders[@]}" >"$log" 2>&1 </dev/null; then
        printf '%-20s %9s runs, nothing found\n' "$target" "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
        return
    fi
    printf '%-20s BROKEN: %s\n' "$target" "$(grep -m 1 -E 'oracle broken|ERROR: |runtime error' "$log")"
    printf '    input: %s\n    log:   %s\n' "$(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)" "$log"
    return 1
}

seconds=60
if [[ "${1:-}" =~ ^[0-9]+$ ]]; then
    seconds=$1
    shift
fi
mapfile -t all < <(sed -n 's/^tavrine_fuzz(\([a-z_]*\) .*/\1/p' "$texts/CMakeLists.txt")
for target in "$@"; do
    if [[ " ${all[*]} " != *" $target "* ]]; then
        say "no such target: $target; there are ${all[*]}"
        exit 1
    fi
done
[ "$#" -ne 0 ] || set -- "${all[@]}"
"$root/scripts/install-deps.sh" fuzz || exit 1
build_preset fuzz "${@/%/_fuzz}" || exit 1
broken=0
for target in "$@"; do
    fuzz "$target" "$seconds" || broken=1
done
exit "$broken"
