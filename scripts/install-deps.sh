#!/usr/bin/env bash
# Installs the Debian 12 packages that are missing: install-deps.sh [build|test|coverage|fuzz|bench]
#   build     what the programs need (default)    test  the same and what the tests need
#   coverage  what the tests need, and the reader of their counters
#   fuzz      what the tests need, and the fuzzer
#   bench     what the programs need, and what the measurements need
# Says nothing when all is there, and one line when it cannot go on.
set -euo pipefail

build_packages=(g++ cmake ninja-build pkg-config ccache libboost-json1.81-dev libcurl4-openssl-dev libssl-dev
    libcli11-dev libfmt-dev libtomlplusplus-dev libspdlog-dev libpcre2-dev libcpp-httplib-dev zlib1g-dev libxxhash-dev
    ca-certificates)
test_packages=(libgtest-dev libgmock-dev librapidcheck-dev)
coverage_packages=(gcovr)
fuzz_packages=(clang libclang-rt-14-dev)
bench_packages=(libbenchmark-dev curl)

say() { printf 'install-deps: %s\n' "$*" >&2; }
fail() { say "$*"; exit 1; }

is_installed() { [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

missing_packages()
{
    local package
    for package in "$@"; do
        is_installed "$package" || printf '%s\n' "$package"
    done
}

# The command that becomes root, empty for root itself.
find_root()
{
    as_root=()
    [ "$(id -u)" -ne 0 ] || return 0
    command -v sudo >/dev/null || fail "neither root nor sudo; run as root: apt-get install ${missing[*]}"
    as_root=(sudo)
    if [ ! -t 0 ]; then
        sudo -n true 2>/dev/null || fail "sudo wants a password and there is no terminal; run as root: apt-get install ${missing[*]}"
        as_root=(sudo -n)
    fi
}

apt() { "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive LC_ALL=C apt-get -q -y -o DPkg::Lock::Timeout=300 "$@" </dev/null; }

first_complaint() { grep -m 1 -E '^(E: |W: Failed to fetch)' "$1" || tail -n 1 "$1"; }

# An update that fetched nothing ends with success, so its complaint stands beside that of the installation.
cause()
{
    first_complaint "$log/install"
    grep -m 1 -E '^(E: |W: Failed to fetch)' "$log/update" | sed 's/^/; apt-get update: /'
}

main()
{
    local wanted=("${build_packages[@]}")
    case "${1:-build}" in
        build) ;;
        test) wanted+=("${test_packages[@]}") ;;
        coverage) wanted+=("${test_packages[@]}" "${coverage_packages[@]}") ;;
        fuzz) wanted+=("${test_packages[@]}" "${fuzz_packages[@]}") ;;
        bench) wanted+=("${bench_packages[@]}") ;;
        *) fail "unknown set of packages: $1 (build, test, coverage, fuzz or bench)" ;;
    esac
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        fail "no dpkg-query and apt-get: this is no Debian-like system; what is needed: ${wanted[*]}"
    fi

    mapfile -t missing < <(missing_packages "${wanted[@]}")
    [ "${#missing[@]}" -ne 0 ] || return 0
    find_root
    say "installing ${missing[*]}"
    # The default Boost of Debian 12 has no Boost.JSON, and its headers and those of 1.81 exclude each other.
    ! is_installed libboost1.74-dev || say "apt replaces libboost1.74-dev by the headers of Boost 1.81"

    log=$(mktemp -d)
    trap 'rm -rf "$log"' EXIT
    apt update >"$log/update" 2>&1 || true
    apt install --no-install-recommends "${missing[@]}" >"$log/install" 2>&1 ||
        fail "apt-get failed (no network?): $(cause | tr -d '\n')"
}

main "$@"
