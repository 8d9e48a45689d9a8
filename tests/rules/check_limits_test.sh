#!/usr/bin/env bash
# check_limits_test.sh CHECKER FOLDER: proves on a copy of the sources that the checker lets them pass and tells each
# planted fault.
set -euo pipefail

checker=$1
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
failures=0

fresh_tree()
{
    rm -rf "${tree:?}"/*
    mkdir "$tree/docs"
    cp "$1/docs/limits.md" "$tree/docs"
    cp -r "$1/include" "$1/tool" "$1/RedfishConfig" "$1/simulator" "$1/tests" "$tree"
}

# expect WORDS...: the checker fails and says them all.
expect()
{
    local told words
    if told=$("$checker" "$tree" 2>&1); then
        echo "passes in spite of: $*" >&2
        failures=$((failures + 1))
        return
    fi
    for words; do
        if [[ "$told" != *"$words"* ]]; then
            printf 'does not tell: %s\n%s\n' "$words" "$told" >&2
            failures=$((failures + 1))
        fi
    done
}

fresh_tree "$2"
"$checker" "$tree"

planted=()
for prefix in Max Most Largest Longest Deepest; do
    echo "constexpr std::size_t ${prefix}Planted = 7;" >>"$tree/tool/Answer.cpp"
    planted+=("no row for ${prefix}Planted of tool/Answer.cpp")
done
echo "    std::size_t MaxMember = 7;" >>"$tree/tool/Answer.cpp"
planted+=("no row for MaxMember of tool/Answer.cpp")
expect "${planted[@]}"

fresh_tree "$2"
sed -i 's/LongestPassword = 4096/LongestPassword = 4097/' "$tree/tool/Password.h"
expect '4096 is not LongestPassword of tool/Password.h'

fresh_tree "$2"
sed -i 's/OnlyTheLastLinesAreKept/Renamed/' "$tree/tests/tool/AnswerTest.cpp"
expect 'no such test: CauseLog.OnlyTheLastLinesAreKept'

fresh_tree "$2"
sed -i 's/LongestShownName/ShownNameBytes/' "$tree/tool/SavedSettings.cpp"
expect 'knows of what is not there: tool/SavedSettings.cpp:LongestShownName'

exit "$((failures > 0))"
