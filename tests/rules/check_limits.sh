#!/usr/bin/env bash
# Holds docs/limits.md to the sources: check_limits.sh [FOLDER]
# Each row's number is the value of its constant, its test is written somewhere, and what is named like a limit has a row.
set -uo pipefail

root=$(cd "${1:-.}" && pwd -P)
table=$root/docs/limits.md
failed=0

# What is named like a limit and limits nothing from outside: own pauses, options of the command line, what is shown of
# something that was taken, and what is of this program alone.
no_limits="
RedfishConfig/RedfishConfigAssistant/AnswerResults.cpp:MaxPathBytes
RedfishConfig/RedfishConfigAssistant/RedfishClient.cpp:LongestOwnWait
RedfishConfig/RedfishConfigAssistant/RedfishClient.cpp:MaxPauseMilliseconds
RedfishConfig/RedfishConfigAssistant/RegistryStore.cpp:MaxEntryBytes
RedfishConfig/RedfishConfigAssistant/TaskFollower.cpp:LongestPause
RedfishConfig/RedfishConfigAssistant/TaskFollower.cpp:MaxPathBytes
RedfishConfig/RedfishConfigCommon/AttributeDraft.cpp:LongestWord
RedfishConfig/RedfishConfigCommon/AttributeRegistry.cpp:MaxNameInNote
RedfishConfig/RedfishConfigCommon/Dependencies.cpp:MaxConditionText
RedfishConfig/RedfishConfigCommon/PatchContexts.cpp:MostOwnEvaluations
RedfishConfig/RedfishConfigCommon/ValueTexts.cpp:MaxNamesListed
RedfishConfig/RedfishConfigCommon/ValueTexts.cpp:MaxQuotedBytes
simulator/include/BmcSimulator.h:MaxAttributes
simulator/src/Scalars.cpp:MaxShownValue
tool/Answer.cpp:LargestStatus
tool/Confirmation.cpp:LongestLine
tool/Confirmation.cpp:LongestReply
tool/Heap.cpp:LargestBlock
tool/Options.cpp:LongestLanguage
tool/Options.cpp:LongestPrefix
tool/Options.h:LongestWait
tool/Restart.cpp:LongestPause
tool/SavedSettings.cpp:LongestShownName
tool/Secret.cpp:LongestEscape
"

complain() { printf '%s: %s\n' "$table" "$*" >&2; failed=1; }

# The value of "constexpr ... NAME = EXPRESSION;" or of a member of that name, as a number.
value_of()
{
    local expression
    expression=$(sed -n -E "s/.*[ :]$1 = ([^;]*);.*/\1/p;s/.*[ :]$1 = ([^;]*)$/\1/p" "$2" | head -n 1)
    # Digits, blanks, "*" and "<<" alone are left for the shell to work out.
    expression=$(sed -E "s/std::size_t\{([0-9]+)\}/\1/g;s/'//g;s/([0-9])[uU][lL]*/\1/g" <<<"$expression")
    [[ "$expression" =~ ^[0-9\ \*\<]+$ ]] && printf '%s' "$((expression))"
}

rows=0
while IFS='|' read -r _ what limit constant source _ name _; do
    limit=${limit// /}
    [[ "$limit" =~ ^[0-9]+$ ]] || continue
    rows=$((rows + 1))
    constant=$(tr -d '` ' <<<"$constant")
    source=$(tr -d '` ' <<<"$source")
    name=$(tr -d '` ' <<<"$name")
    if [ ! -f "$root/$source" ]; then
        complain "no such file: $source"
    elif [ "$(value_of "$constant" "$root/$source")" != "$limit" ]; then
        complain "$what: $limit is not $constant of $source"
    fi
    grep -rqsE "TEST(_F|_P)?\(${name%.*}, ${name#*.}\)" "$root/tests" || complain "$what: no such test: $name"
done <"$table"

# Constants, and members that begin with a value other than 0, which stands for none.
kinds='(Max|Most|Largest|Longest|Deepest)[A-Z][A-Za-z]*'
named=$(cd "$root" && grep -rHoE -e "constexpr [^=;(]*\b$kinds" -e "^ +[A-Za-z0-9_:]+ $kinds = [1-9]" \
    --include='*.h' --include='*.cpp' include tool RedfishConfig simulator | sed -E 's/ = .$//;s/:.* /:/')
while IFS=: read -r source constant; do
    grep -qF "| \`$constant\` | \`$source\` |" "$table" || grep -qxF "$source:$constant" <<<"$no_limits" ||
        complain "no row for $constant of $source"
done <<<"$named"
for known in $no_limits; do
    grep -qxF "$known" <<<"$named" || complain "$0 knows of what is not there: $known"
done
[ "$rows" -ge 10 ] || complain "the table has $rows rows"
exit "$failed"
