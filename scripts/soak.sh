#!/bin/bash
# Runs the long tests, after installing the packages for that (scripts/install_packages.sh soak), and
# prints one table with the name, outcome and counts of each.
#
#   scripts/soak.sh [minutes]     minutes (10) of soak; the rest takes about as long again
#
# The soak runs all operations of the Java API at once under -Xcheck:jni, and fails if memory,
# threads, files or references grow. The other parts run under the address and undefined-behaviour
# sanitizers, the API fuzzer also under -Xcheck:jni without them. Logs are in build/soak.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:-10}
scripts/install_packages.sh soak

logs=build/soak
rm -rf "$logs"
mkdir -p "$logs"

scripts/build.sh dev --target settings_soak tomcat_soak
scripts/build.sh asan --target settings_soak kill_test sharing_test durability_tests
scripts/build.sh clang --target settings_file_fuzz

rows=()
failed=0
jni_warnings='WARNING in native method|FATAL ERROR in native method|JNI local refs: [0-9]+, exceeds|Warning: Calling other JNI'

# try name pattern command...: runs the command; the table shows the lines of its output that match
# the pattern.
try() {
  local name=$1 pattern=$2 log="$logs/${1// /_}.log" outcome=passed
  echo "== $name"
  "${@:3}" >"$log" 2>&1 || outcome=FAILED
  if grep -qE "$jni_warnings" "$log"; then outcome=FAILED; fi
  if [[ $outcome == FAILED ]]; then
    failed=1
    tail -n 30 "$log"
  fi
  local found=0 line
  while read -r line; do
    found=1
    rows+=("$(printf '%-34s %-8s %s' "$name" "$outcome" "$line")")
  done < <(grep -hE "$pattern" "$log" |
    awk '{ times[$0]++ } END { for (line in times) print (times[line] > 1 ? times[line] " times " : "") line }' |
    sort)
  [[ $found -eq 1 ]] || rows+=("$(printf '%-34s %-8s %s' "$name" "$outcome" "see $log")")
}

fuzz_files() {
  mkdir -p build/clang/corpus
  build/clang/tests/fuzz/settings_file_fuzz -max_total_time=$((minutes * 15)) -timeout=10 \
    -rss_limit_mb=2048 -print_final_stats=1 -dict=tests/fuzz/settings_file.dict \
    -artifact_prefix="$logs/" build/clang/corpus tests/fuzz/corpus
}

seconds=$((minutes * 60))
try "soak" '^soak, |^FAILED' bash build/dev/tests/soak/run.sh soak.Soak "$seconds"
try "redeploys in Tomcat" '^redeploys in Tomcat|AssertionError' \
  bash build/dev/tests/soak/tomcat/run.sh 20
try "API fuzzing" 'API fuzzing|^FAILED' \
  bash build/dev/tests/soak/run.sh soak.ApiFuzz $((seconds / 4))
try "API fuzzing with sanitizers" 'API fuzzing|^FAILED' \
  bash build/asan/tests/soak/run.sh soak.ApiFuzz $((seconds / 4))
try "settings-file fuzzing" 'number_of_executed_units|ERROR' fuzz_files
try "kills while settings change" 'kills' \
  build/asan/tests/durability/kill_test $((minutes * 50))
try "processes that share settings" 'changes of' \
  build/asan/tests/durability/sharing_test $((minutes * 3))
try "failing disks and damaged files" 'PASSED|FAILED' \
  build/asan/tests/durability/durability_tests --gtest_brief=1 \
  --gtest_repeat=$(((minutes + 4) / 5))

echo
printf '%s\n' "${rows[@]}"
[[ $failed -eq 0 ]] && echo "Nothing failed." || echo "Something failed; the logs are in $logs."
exit "$failed"
