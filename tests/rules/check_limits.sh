#!/usr/bin/env bash
# Holds docs/limits.md to the sources: check_limits.sh [FOLDER]
# Each row's number is the value of its constant, and its test is written somewhere.
set -uo pipefail

root=$(cd "${1:-.}" && pwd -P)
table=$root/docs/limits.md
failed=0

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
[ "$rows" -ge 10 ] || complain "the table has $rows rows"
exit "$failed"
