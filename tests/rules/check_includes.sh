#!/usr/bin/env bash
# check_includes.sh ROOT: who may include whom. Names every file and line that breaks a
# rule and ends with 1 then.
#   include/                        itself, the standard library, Boost's forward headers
#   RedfishConfig/BIOSResourceProc  include/, itself, the standard library, Boost
#   RedfishConfig/ANOTHER           include/, itself, third-party libraries
#   simulator/                      itself, third-party libraries
#   tool/                           include/, itself, simulator/include, third-party libraries
set -euo pipefail

root=$1
violations=0
checked=0

# The project's own header of this name, wherever it stands.
is_own_header() { [ -n "$(find "$root/include" "$root/RedfishConfig" "$root/simulator" "$root/tool" -name "${1##*/}" -print -quit)" ]; }

is_standard() { [[ $1 =~ ^[a-z_0-9]+$ ]]; }

declare -A angle_rules=(
    [standard_and_boost_forward]='^boost/([a-z_0-9/]*/)?(fwd|[a-z_0-9]+_fwd)\.hpp$'
    [standard_and_boost]='^boost/.*\.hpp$'
)

# Of two headers of one name the compiler takes the one beside the file first, and so does this.
quoted_is_allowed()
{
    local name=$1 folder
    shift
    [[ $name != *..* && $name != /* ]] || return 1
    for folder in "$@"; do
        [ ! -e "$root/$folder/$name" ] || return 0
    done
    return 1
}

angled_is_allowed()
{
    local name=$1 rule=$2
    is_standard "$name" && return
    if [ "$rule" != third_party ]; then
        [[ $name =~ ${angle_rules[$rule]} ]]
    elif is_own_header "$name"; then
        return 1
    fi
}

violation()
{
    printf '%s: %s may not include %s\n' "${1#"$root/"}" "$2" "$3"
    violations=$((violations + 1))
}

# check FOLDER ANGLE-RULE QUOTED-FOLDER...: every include of the folder's sources.
check()
{
    local folder=$1 rule=$2 place text files
    shift 2
    mapfile -t files < <(find "$root/$folder" -type f -regex '.*\.\(h\|hpp\|ipp\|inc\|c\|cc\|cpp\)' | LC_ALL=C sort)
    if [ "${#files[@]}" -eq 0 ]; then
        violation "$root/$folder" "$folder" "nothing: it has no source to check"
        return
    fi
    checked=$((checked + ${#files[@]}))
    while IFS=$'\t' read -r place text; do
        case $text in
            '"'*) text=${text#\"}; quoted_is_allowed "${text%%\"*}" "$@" || violation "$place" "$folder" "\"${text%%\"*}\"" ;;
            '<'*) text=${text#<}; angled_is_allowed "${text%%>*}" "$rule" || violation "$place" "$folder" "<${text%%>*}>" ;;
            *) violation "$place" "$folder" "what a macro names: $text" ;;
        esac
    done < <(grep -nHE '^[[:space:]]*#[[:space:]]*(include|include_next|import)\b' "${files[@]}" |
        sed -E 's/^([^:]*:[0-9]+):[[:space:]]*#[[:space:]]*(include_next|include|import)[[:space:]]*/\1\t/')
}

folders_of() { find "$root/$1" -type d | sed "s|^$root/||" | LC_ALL=C sort; }

# check_tree FOLDER ANGLE-RULE QUOTED-FOLDER...: as check; the folder's own headers are allowed too.
check_tree()
{
    local folder=$1 own
    mapfile -t own < <(folders_of "$folder")
    check "$@" "${own[@]}"
}

check_tree include standard_and_boost_forward
neighbours=0
for folder in "$root"/RedfishConfig/*/; do
    name=RedfishConfig/$(basename "$folder")
    rule=third_party
    [ "$name" != RedfishConfig/BIOSResourceProc ] || rule=standard_and_boost
    check_tree "$name" "$rule" include
    neighbours=$((neighbours + 1))
done
[ "$neighbours" -eq 7 ] || violation "$root/RedfishConfig" RedfishConfig "$neighbours libraries where 7 are due"
check_tree simulator third_party
check_tree tool third_party include simulator/include
printf '%s files checked, %s violations\n' "$checked" "$violations"
[ "$violations" -eq 0 ]
