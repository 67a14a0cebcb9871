#!/bin/bash
# Runs the tests in a build that counts, and prints how much of the C++ and the Java code they reach,
# after installing what that needs (scripts/install_packages.sh coverage). The lines that are not
# reached are in build/coverage/cpp.txt and build/coverage/java.txt.
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

# The distribution's agent is no agent: it lacks the manifest, and what it is made of is in other jars.
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

# The agent keeps classes alive, does not work near the end of a stack, and its option has every java
# program print a line: tests that watch classes being unloaded, fill the stack, or read what a program
# prints, run without it.
with_agent='^(java\.[^LF]|java\.Listener|soak\.)'
echo "== testing (log in $log)"
quietly env "JAVA_TOOL_OPTIONS=-javaagent:$home/agent.jar=destfile=$home/java.exec,includes=com.velonix.*" \
  ctest --test-dir "$home" --output-on-failure -j 2 --no-tests=error -R "$with_agent"
quietly ctest --test-dir "$home" --output-on-failure -j 2 --no-tests=error \
  -E "$with_agent|exported-symbols" # what counts exports symbols of its own

echo "== C++"
gcovr --root . --object-directory "$home" --exclude-throw-branches --print-summary \
  --filter '(base|bridge|values|service|nativesettings|host)/' --txt "$home/cpp.txt" 2>>"$log"
echo "== Java"
"$JAVA_HOME/bin/java" -cp "$(IFS=: && echo "${jars[*]}")" tests/coverage/JavaCoverage.java \
  "$home/java.exec" "$home/java/api/settings-api.jar" "$home/java.txt"
