#!/usr/bin/env bash
# Installs what is missing, builds the release and runs it.
#   run.sh             a short tour against the built-in simulated BMC
#   run.sh ARGUMENT... tavrine with these arguments; its exit status is the script's
# Exit status 70: the programs could not be built.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

tool=$root/build/release/bin/tavrine

# Shows a command as one would type it, then runs it and keeps its output in `output`.
step()
{
    printf '\n$ tavrine%s\n' "$(printf ' %q' "$@")"
    output=$("$tool" "$@")
}

# The first lines of `output`, and how many there are in all.
show_first()
{
    local total
    total=$(wc -l <<<"$output")
    head -n "$1" <<<"$output"
    [ "$total" -le "$1" ] || printf '... (%s lines in all)\n' "$total"
}

tour()
{
    echo 'A tour of tavrine against its simulated BMC, over HTTPS on this machine.'
    step --simulate show
    show_first 8
    local setting=${output%%=*}
    step --simulate show "$setting"
    show_first 1
    step --simulate --json show "$setting"
    show_first 8
    step --simulate groups
    show_first 8
    printf '\nYour own server: scripts/run.sh --bmc HOST --user NAME show\n'
}

"$root/scripts/install-deps.sh" build || exit 70
build_preset release || exit 70
if [ "$#" -eq 0 ]; then
    tour
else
    exec "$tool" "$@"
fi
