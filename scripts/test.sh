#!/bin/bash
# Builds and runs every test, after installing the packages for that (scripts/install_packages.sh).
#
#   scripts/test.sh            all tests, with and without a JVM (-Xcheck:jni)
#   scripts/test.sh asan       the same under the address, undefined-behaviour and leak sanitizers
#   scripts/test.sh tsan       the tests without a JVM under the thread sanitizer
#   scripts/test.sh clang      a clang build with thread-safety analysis, and each fuzzer for
#                              FUZZ_SECONDS (60) seconds
#   scripts/test.sh cluster    the workgroup level on clusters of etcd on this machine, whose members
#                              are killed and stopped, for a minute (HISTORY_SECONDS) and a half
#   scripts/test.sh java-consumers  applications that use the jar: a Maven project, a module, images,
#                              a machine without the libraries that the jar brings
#   scripts/test.sh cpp-consumers   C++ projects that use the installed libraries, the packages, or the
#                              source tree as a part of their own
#   scripts/test.sh format     whether clang-format would change a C++ source
#   scripts/test.sh tidy       clang-tidy over all sources; not part of continuous integration
#
# Several parts may be named at once; the first one is called dev.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh

run_ctest() {
  echo "== $1: testing"
  ctest --preset "$1" |
    grep -vE '^ +Start |^ *[0-9]+/[0-9]+ Test .* Passed '
}

run_dev() { scripts/build.sh dev && run_ctest dev; }
run_asan() { scripts/build.sh asan && run_ctest asan; }
run_tsan() { scripts/build.sh tsan && run_ctest tsan; }

# fuzz TARGET CORPUS SECONDS
fuzz() {
  echo "== clang: fuzzing with $1 for $3 seconds"
  mkdir -p "build/clang/$2"
  "build/clang/tests/fuzz/$1_fuzz" -max_total_time="$3" -timeout=10 \
    -rss_limit_mb=2048 -print_final_stats=1 -dict="tests/fuzz/$1.dict" \
    -artifact_prefix=build/clang/ "build/clang/$2" "tests/fuzz/$2" 2>&1 |
    grep -E '^(stat::number_of_executed_units|stat::peak_rss|SUMMARY|==)|ERROR|Done'
  [[ ${PIPESTATUS[0]} -eq 0 ]]
}

run_clang() {
  scripts/build.sh clang
  local seconds="${FUZZ_SECONDS:-60}"
  fuzz settings_file corpus "$seconds"
  fuzz cluster_answer cluster_corpus "$seconds"
}

run_cluster() {
  scripts/install_packages.sh cluster
  scripts/build.sh dev --target cluster_tests history_test settings_java_tests
  echo "== cluster: testing"
  build/dev/tests/cluster/cluster_tests --gtest_brief=1
  tests/cluster/java.sh build/dev
  build/dev/tests/cluster/history_test "${HISTORY_SECONDS:-60}"
}

run_java-consumers() {
  scripts/install_packages.sh java-consumers
  scripts/build.sh dev --target maven_repository
  echo "== java-consumers: testing"
  local consumer
  for consumer in maven modules bare_machine temporary_folder; do
    "tests/consumers/java/$consumer.sh" build/dev/java/repository
  done
}

run_cpp-consumers() {
  scripts/install_packages.sh cpp-consumers
  scripts/build.sh package
  echo "== cpp-consumers: testing"
  tests/consumers/cpp/run.sh build/package
}

run_format() {
  echo "== format: clang-format"
  git ls-files '*.h' '*.cpp' | xargs clang-format-14 --dry-run -Werror
}

run_tidy() {
  scripts/build.sh clang
  echo "== tidy: clang-tidy"
  git ls-files '*.cpp' | grep -E '^(base|values|bridge|service|nativesettings|host)/' |
    xargs -P 2 -n 4 clang-tidy-14 -p build/clang --quiet 2>/dev/null
}

[[ $# -gt 0 ]] || set -- dev
for part in "$@"; do
  "run_$part"
done
echo "All tests passed: $*"
