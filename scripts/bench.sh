#!/usr/bin/env bash
# Installs what is missing, builds the release and measures it:
#   bench.sh [--quick] [program|inprocess] [--settings N] [--latency MS] [--scheme http|https]
#   program    tavrine against the simulated BMC, beside curl sending the same requests; the last three options
#              choose the machines
#   inprocess  what the library computes, with its order of growth
# One table of each on standard output; the same as JSON in build/bench/*.json. Figures of
# one run may be held against each other, not against those of another machine or hour.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

folder=$root/build/bench
quick=()
machines=()
parts=(program inprocess)
while [ $# -gt 0 ]; do
    case $1 in
        --quick) quick=(--quick) ;;
        program | inprocess) parts=("$1") ;;
        --settings | --latency | --scheme)
            [ $# -gt 1 ] || { say "$1 needs a value"; exit 64; }
            machines+=("$1" "$2")
            shift
            ;;
        *) say "unknown word $1: bench.sh [--quick] [program|inprocess] [--settings N] [--latency MS] [--scheme http|https]"; exit 64 ;;
    esac
    shift
done

measure_program()
{
    local scratch
    scratch=$(mktemp -d)
    # shellcheck disable=SC2064 # the name is known now and not at the end
    trap "rm -rf '$scratch'" EXIT
    "$folder/bin/bench_program" "$folder/bin/tavrine" "$folder/bin/tavrine-bmcsim" "$scratch" "$folder/program.json" \
        "${quick[@]}" "${machines[@]}"
}

measure_inprocess()
{
    local arguments=(--benchmark_repetitions=5 --benchmark_min_time=0.02 --benchmark_report_aggregates_only=true
        --benchmark_out="$folder/inprocess.json" --benchmark_out_format=json)
    [ "${#quick[@]}" -eq 0 ] || arguments+=(--benchmark_filter='/(100|1000|10000)$')
    "$folder/bin/bench_inprocess" "${arguments[@]}" |
        awk '/_median|_BigO|_RMS/ || NR <= 3'
}

"$root/scripts/install-deps.sh" bench || exit 70
build_preset bench || exit 70
printf '%s cores, load %s\n\n' "$(nproc)" "$(cut -d' ' -f1 /proc/loadavg)"
for part in "${parts[@]}"; do
    "measure_$part"
    echo
done
