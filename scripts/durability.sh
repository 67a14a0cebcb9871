#!/bin/bash
# Kills a process that stores settings thousands of times, and has four processes write at the same
# time for a minute. Prints the kills and the acknowledged, lost and torn changes; then the changes and
# events of each process. Fails if any change was lost.
#
#   scripts/durability.sh [kills] [seconds]     5000 kills take about 10 minutes
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh
scripts/build.sh dev --target kill_test sharing_test
build/dev/tests/durability/kill_test "${1:-5000}"
build/dev/tests/durability/sharing_test "${2:-60}"
