#!/bin/bash
# Ends programs while settings are in use, many times in each way: with active listeners, with a
# native thread publishing, with System.exit in a listener, and with DestroyJavaVM in a program
# that embeds a JVM. Builds first, prints how many runs of each way ended cleanly, and fails if one
# did not. The argument is the number of runs, 200 without one.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh
runs=${1:-200}
log=build/exit_runs.log
mkdir -p build
cmake --preset dev -DLIFECYCLE_RUNS="$runs" >"$log"
scripts/build.sh dev
ways='active-listeners|native-thread-publishing|exit-in-listener|destroy-java-vm'
if ctest --test-dir build/dev -R "lifecycle\.($ways)\$" --verbose >"$log" 2>&1; then code=0; else code=1; fi
cmake --preset dev -ULIFECYCLE_RUNS >/dev/null
# Prints the lines of the runs with their counts, below the name of each way.
sed -nE 's/^ *Start +[0-9]+: lifecycle\.(.*)/\1/p; s/^[0-9]+: (.*(ended with|runs ended cleanly).*)/  \1/p' "$log"
exit "$code"
