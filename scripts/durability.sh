#!/bin/bash
# Kills a process that stores settings thousands of times, and lets four processes write at the same
# time for a minute. Prints kills, acknowledged changes, lost and torn ones; then what each process has
# changed and heard of. Fails when anything was lost.
#
#   scripts/durability.sh [kills] [seconds]     5000 kills take about 10 minutes
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh
scripts/build.sh dev --target kill_test sharing_test
build/dev/tests/durability/kill_test "${1:-5000}"
build/dev/tests/durability/sharing_test "${2:-60}"
