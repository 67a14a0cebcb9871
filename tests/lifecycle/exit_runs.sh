#!/bin/bash
# Runs a program that ends while settings are in use, many times over, and counts the clean ends.
# Arguments: the number of runs, then the command. A clean end has exit code 0, comes within the time, and
# prints none of a JVM's messages of faults. Each run has a user directory of its own.
set -u
runs=$1
shift
clean=0
SETTINGS_USERDIR=$(mktemp -d)
export SETTINGS_USERDIR
trap 'rm -rf "$SETTINGS_USERDIR"' EXIT
for ((run = 1; run <= runs; ++run)); do
  rm -rf "$SETTINGS_USERDIR"
  output=$(timeout 30 "$@" 2>&1)
  code=$?
  if [[ $code -eq 0 ]] && ! grep -qE 'SIG[A-Z]+ \(|fatal error|WARNING in native|Exception|ERROR: [A-Za-z]+Sanitizer' <<<"$output"; then
    clean=$((clean + 1))
  else
    echo "run $run ended with $code: $(tail -n 20 <<<"$output")"
  fi
done
echo "$clean of $runs runs ended cleanly"
[[ $clean -eq $runs ]]
