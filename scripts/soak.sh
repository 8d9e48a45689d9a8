#!/usr/bin/env bash
# Installs what is missing, builds the debug build's soak test and runs it for long.
#   soak.sh [OPERATIONS [SEED]]   10000 operations by default; the run prints its seed, and the same seed
#                                 gives the same operations
# Its exit status is the test's; 70: it could not be built.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

"$root/scripts/install-deps.sh" test || exit 70
build_preset dev soak_test || exit 70
exec "$root/build/dev/bin/soak_test" "--operations=${1:-10000}" ${2:+"--seed=$2"} </dev/null
