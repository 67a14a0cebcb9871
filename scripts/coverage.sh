#!/bin/bash
# Runs the tests in an instrumented build and prints their coverage of the C++ and the Java code, after
# installing the packages for that (scripts/install_packages.sh coverage). build/coverage/cpp.txt and
# build/coverage/java.txt list the lines that are not covered.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh coverage

export JAVA_HOME=${JAVA_HOME:-/usr/lib/jvm/java-17-openjdk-amd64}
home=$PWD/build/coverage
log=$home/coverage.log
mkdir -p "$home"
find "$home" -name '*.gcda' -delete
rm -f "$home/java.exec"

quietly() {
  "$@" >>"$log" 2>&1 || { tail -n 60 "$log" && exit 1; }
}
: >"$log"

scripts/build.sh coverage

# The jar of the distribution's agent has no manifest, and its classes are in other jars.
jars=()
for name in org.jacoco.agent.rt org.jacoco.core asm asm-tree asm-commons asm-analysis; do
  jars+=("/usr/share/java/$name.jar")
done
{
  echo "Premain-Class: org.jacoco.agent.rt.internal.PreMain"
  echo "Class-Path: ${jars[0]}"
  printf '  %s\n' "${jars[@]:1}"
} >"$home/agent.mf"
quietly "$JAVA_HOME/bin/jar" --create --file "$home/agent.jar" --manifest "$home/agent.mf"

# The agent keeps classes alive and fails near the end of a stack, and its option makes every Java
# program print a line. So tests that unload classes, fill the stack or read the output of a program
# run without it.
with_agent='^(java\.[^LF]|java\.Listener|soak\.)'
echo "== testing (log in $log)"
quietly env "JAVA_TOOL_OPTIONS=-javaagent:$home/agent.jar=destfile=$home/java.exec,includes=com.velonix.*" \
  ctest --test-dir "$home" --output-on-failure -j 2 --no-tests=error -R "$with_agent"
quietly ctest --test-dir "$home" --output-on-failure -j 2 --no-tests=error \
  -E "$with_agent|exported-symbols" # instrumented libraries export more symbols

echo "== C++"
gcovr --root . --object-directory "$home" --exclude-throw-branches --print-summary \
  --filter '(base|bridge|values|service|nativesettings|host)/' --txt "$home/cpp.txt" 2>>"$log"
echo "== Java"
"$JAVA_HOME/bin/java" -cp "$(IFS=: && echo "${jars[*]}")" tests/coverage/JavaCoverage.java \
  "$home/java.exec" "$home/java/api/settings-api.jar" "$home/java.txt"
