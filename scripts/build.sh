#!/bin/bash
# Configures and builds a preset, quietly unless it fails: the output is in build/<preset>.log.
#
#   scripts/build.sh preset [argument of cmake --build]...
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
log=build/$preset.log
mkdir -p build
# Lets clones of the project share the cache of the compiler: paths are relative to the root.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
echo "== $preset: building (log in $log)"
if ! { cmake --preset "$preset" && cmake --build "build/$preset" "${@:2}"; } >"$log" 2>&1; then
  tail -n 60 "$log"
  exit 1
fi
