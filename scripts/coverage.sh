#!/usr/bin/env bash
# Builds with counters in build/coverage, runs tests, and prints how much of each folder they ran through.
#   coverage.sh           every test
#   coverage.sh contract  the contract tests alone: enough for the verdict below
# Ends with 1 when a line of the library (RedfishConfig/BIOSResourceProc) was run by no test, and names it, and with 2
# when something failed on the way. A line that cannot run stands between GCOV_EXCL_START and GCOV_EXCL_STOP, with the
# reason.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

held_to_all_lines=RedfishConfig/BIOSResourceProc
folder=$root/build/coverage

# count FOLDER...: what gcovr finds in these. A branch that only an exception takes says nothing about the tests.
count()
{
    local filters=() part
    for part in "$@"; do
        filters+=(--filter "$part/")
    done
    (cd "$root" && gcovr --root "$root" --object-directory "$folder" "${filters[@]}" \
        --exclude-throw-branches --exclude-unreachable-branches --gcov-ignore-parse-errors \
        --csv "$folder/coverage.csv" --sonarqube "$folder/coverage.xml" --html-details "$folder/coverage.html" \
        "$folder") >"$folder/gcovr.log" 2>&1 </dev/null
}

# A row for each folder from the table of files, and one for all.
folders()
{
    awk -F, '
        function row(name, l, lc, b, bc)
        {
            printf "%-42s %6d %6d %7.2f%%", name, l, lc, l ? 100 * lc / l : 100
            printf " %6d %6d %7.2f%%\n", b, bc, b ? 100 * bc / b : 100
        }
        NR == 1 { for (i = 1; i <= NF; ++i) column[$i] = i; next }
        {
            name = $column["filename"]; sub("/[^/]*$", "", name); if (!(name in lines)) names[++count] = name
            lines[name] += $column["line_total"]; hit[name] += $column["line_covered"]
            branches[name] += $column["branch_total"]; taken[name] += $column["branch_covered"]
        }
        END {
            printf "%-42s %6s %6s %8s %6s %6s %8s\n", "folder", "lines", "run", "", "branch", "taken", ""
            for (i = 1; i <= count; ++i)
            {
                name = names[i]; row(name, lines[name], hit[name], branches[name], taken[name])
                l += lines[name]; lc += hit[name]; b += branches[name]; bc += taken[name]
            }
            row("all", l, lc, b, bc)
        }' "$folder/coverage.csv"
}

# Whether the table of files has the library in it.
is_counted() { grep -q "^$held_to_all_lines/" "$folder/coverage.csv"; }

# The lines of the library that no test ran, "FILE:LINE" each.
missed_lines()
{
    { grep -oE '<file path="[^"]*"|lineNumber="[0-9]+" covered="false"' "$folder/coverage.xml" || true; } |
        awk -F'"' -v held="$held_to_all_lines/" '
            /^<file/ { file = $2; next }
            index(file, held) == 1 { print file ":" $2 }'
}

run_all() { (cd "$root" && ctest --preset coverage -j "$jobs" --no-tests=error --timeout 600 </dev/null); }

main()
{
    local targets=() tests=(run_all) counted=(RedfishConfig tool simulator include) missed
    case "${1:-all}" in
        all) ;;
        contract)
            targets=(contract_test)
            tests=("$folder/bin/contract_test" --gtest_brief=1)
            counted=("$held_to_all_lines")
            ;;
        *) say "unknown set of tests: $1 (contract, or nothing for all)"; exit 2 ;;
    esac
    "$root/scripts/install-deps.sh" coverage || exit 2
    say "building with counters"
    build_preset coverage "${targets[@]}" || exit 2
    find "$folder" -name '*.gcda' -delete
    say "running the tests"
    quietly "$folder/test.log" "${tests[@]}" || exit 2
    count "${counted[@]}" || { cat "$folder/gcovr.log" >&2; exit 2; }
    folders
    is_counted || { say "nothing was counted in $held_to_all_lines (log: $folder/gcovr.log)"; exit 2; }
    missed=$(missed_lines)
    [ -z "$missed" ] || { say "FAILED: lines of $held_to_all_lines that no test runs:"; printf '%s\n' "$missed"; exit 1; }
    say "every line of $held_to_all_lines was run; file by file in build/coverage/coverage.html"
}

main "$@"
