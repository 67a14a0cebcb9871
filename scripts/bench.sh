#!/bin/bash
# Runs all benchmarks and writes docs/performance.md, after installing the packages for that
# (scripts/install_packages.sh bench). Takes less than ten minutes on two cores; for reliable figures no
# other work should run meanwhile.
#
#   scripts/bench.sh cluster    only the workgroup level on a cluster of etcd; prints a table
set -euo pipefail
cd "$(dirname "$0")/.."

if [[ ${1:-} == cluster ]]; then
  scripts/install_packages.sh cluster
  scripts/build.sh release --target shared_bench shared_memory_bench
  CLUSTER_DIR=$(mktemp -d)
  export CLUSTER_DIR
  trap 'scripts/cluster.sh stop; rm -rf "$CLUSTER_DIR"' EXIT
  scripts/cluster.sh start >"$CLUSTER_DIR/start.log"
  build/release/bench/shared_bench "$CLUSTER_DIR" "$PWD/scripts/cluster.sh"
  shared=$(build/release/bench/shared_memory_bench shared 100000 "$CLUSTER_DIR")
  plain=$(build/release/bench/shared_memory_bench plain 100000)
  echo "| resident memory with 100,000 settings | $((shared / 1024)) MB | $((plain / 1024)) MB | |"
  exit
fi
scripts/install_packages.sh bench

scripts/build.sh release

results=build/release/bench/results
rm -rf "$results"
mkdir -p "$results"

# Repeats all benchmarks of a program in random order, so that other load of the machine affects ours
# and the others alike.
run_native() {
  echo "== $1"
  "build/release/bench/$1" --benchmark_repetitions=9 --benchmark_min_time=0.03 \
    --benchmark_enable_random_interleaving=true --benchmark_out="$results/$(basename "$1").json" \
    --benchmark_out_format=json >build/bench.log 2>&1 || { tail -n 20 build/bench.log && exit 1; }
}

for target in alternatives_bench bridge_bench; do
  echo "== $target"
  cmake --build build/release --target "$target" >build/bench.log 2>&1 ||
    { tail -n 20 build/bench.log && exit 1; }
done
# These print tables, after the output of the build.
for target in hot_read_bench listener_bench prefs_bench; do
  echo "== $target"
  cmake --build build/release --target "$target" | sed '/^\[/d' >"$results/$target.txt"
done
for name in load write read change publish; do
  run_native "service_${name}_bench"
done
run_native alternatives/gsettings_bench
# These run their floors in turn with the works themselves.
for name in service_durable_bench service_sharing_bench; do
  echo "== $name"
  "build/release/bench/$name" >"$results/$name.txt"
done

echo "== program_start_bench"
build/release/bench/program_start_bench build/release/settings >"$results/program_start_bench.txt"

bench/report.py "$results" <bench/performance.md.in >build/performance.md
mv build/performance.md docs/performance.md
echo "Written: docs/performance.md"
