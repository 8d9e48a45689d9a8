#!/usr/bin/env bash
# install_deps_test.sh SCRIPT: runs the script with stand-ins for dpkg-query, apt-get, id
# and sudo, and nothing else of this machine's that matters.
# shellcheck disable=SC2016 # the stand-ins' texts are expanded when they run
set -euo pipefail

script=$1
box=$(mktemp -d)
trap 'rm -rf "$box"' EXIT
failures=0

fresh_machine()
{
    rm -rf "${box:?}/bin"
    mkdir "$box/bin"
    local tool
    for tool in bash env cat grep head tail mktemp rm sed tr; do
        ln -s "$(command -v "$tool")" "$box/bin/$tool"
    done
    : >"$box/calls"
}

# stand_in NAME BODY: a command that also notes how it was called.
stand_in()
{
    printf '#!/usr/bin/env bash\necho "%s $*" >>"%s"\n%s\n' "$1" "$box/calls" "$2" >"$box/bin/$1"
    chmod +x "$box/bin/$1"
}

everything_installed='printf installed'
all_but_two='case ${!#} in libfmt-dev|libgtest-dev) exit 1;; libssl-dev) [ -z "$REMOVED" ] || { printf config-files; exit; };; libboost1.74-dev) exit 1;; esac; printf installed'

run() { status=0; output=$(PATH=$box/bin REMOVED=${removed:-} "$BASH" "$script" "$@" 2>&1 </dev/null) || status=$?; }

expect()
{
    local what=$1 wanted_status=$2 wanted_lines=$3 pattern=$4 lines=0
    [ -z "$output" ] || lines=$(wc -l <<<"$output")
    if [ "$status" -ne "$wanted_status" ] || [ "$lines" -ne "$wanted_lines" ] || ! grep -qE "$pattern" <<<"$output"; then
        printf 'FAILED: %s: status %s, output: %s\n' "$what" "$status" "$output"
        failures=$((failures + 1))
    fi
}

expect_calls()
{
    if [ "$(grep -vc '^dpkg-query\|^id' "$box/calls")" -ne "$2" ] || ! grep -qE "$3" "$box/calls"; then
        printf 'FAILED: %s: calls: %s\n' "$1" "$(cat "$box/calls")"
        failures=$((failures + 1))
    fi
}

fresh_machine
run build
expect 'a system without dpkg' 1 1 'no Debian-like system'

fresh_machine
stand_in dpkg-query "$everything_installed"
stand_in apt-get 'exit 1'
stand_in id 'echo 1000'
run test
expect 'nothing is missing' 0 0 '^$'
expect_calls 'nothing is missing' 0 'dpkg-query'

stand_in dpkg-query "$all_but_two"
run test
expect 'neither root nor sudo' 1 1 'neither root nor sudo; run as root: apt-get install libfmt-dev libgtest-dev$'

stand_in sudo 'exit 1'
run build
expect 'sudo that wants a password' 1 1 'sudo wants a password.*apt-get install libfmt-dev$'

stand_in sudo '[ "$1" = -n ] && shift; "$@"'
stand_in apt-get 'exit 0'
: >"$box/calls"
run build
expect 'sudo' 0 1 'installing libfmt-dev$'
expect_calls 'sudo' 5 '^apt-get .*install --no-install-recommends libfmt-dev$'

stand_in id 'echo 0'
: >"$box/calls"
run test
expect 'root' 0 1 'installing libfmt-dev libgtest-dev$'
expect_calls 'root' 2 '^apt-get .*update$'

removed=1 run build
expect 'a removed package whose settings remain' 0 1 'installing libssl-dev libfmt-dev$'

stand_in dpkg-query 'case ${!#} in libboost-json1.81-dev) exit 1;; esac; printf installed'
run build
expect 'the default Boost is there' 0 2 'apt replaces libboost1.74-dev'

stand_in apt-get 'case $* in *install*) echo "E: Unable to locate package x"; exit 100;; *) echo "W: Failed to fetch http://deb: no route"; esac'
run build
expect 'no network' 1 3 'apt-get failed \(no network\?\): E: Unable to locate package x; apt-get update: W: Failed to fetch'

stand_in dpkg-query "$all_but_two"
stand_in apt-get 'case $* in *install*) echo "E: Unable to locate package x"; exit 100;; *) echo done; esac'
run build
expect 'apt that fails' 1 2 'apt-get failed \(no network\?\): E: Unable to locate package x$'

stand_in dpkg-query 'case ${!#} in gcovr) exit 1;; libboost1.74-dev) exit 1;; esac; printf installed'
stand_in apt-get 'exit 0'
run test
expect 'the reader of the counters is not for tests' 0 0 '^$'
run coverage
expect 'what coverage needs' 0 1 'installing gcovr$'

run everything
expect 'an unknown set' 1 1 'unknown set of packages: everything'

printf '%s failures\n' "$failures"
[ "$failures" -eq 0 ]
