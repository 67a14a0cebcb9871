#!/bin/bash
# Runs the tests of the Java API on a shared workgroup level, as a user who may only read it, on a
# cluster of one member.
#
#   java.sh BUILD     a build that has the targets settings_java_tests and nativesettings_jar
set -euo pipefail
cd "$(dirname "$0")/../.."
build=$PWD/$1
work=$(mktemp -d)
export CLUSTER_DIR=$work/cluster CLUSTER_MEMBERS=1
trap 'scripts/cluster.sh stop; rm -rf "$work"' EXIT
scripts/cluster.sh start >"$work/start.log"
scripts/cluster.sh ctl put /team/settings/editor/fontSize '{"type":"int","value":14}' >"$work/put.log"
. "$CLUSTER_DIR/environment"
export SETTINGS_WORKGROUP_CREDENTIALS=$CLUSTER_DIR/reader.credentials
export SETTINGS_USERDIR=$work/user SETTINGS_FACTORYDIR=$work/factory
mkdir "$work/factory"

class_path=$work/classes:$build/tests/java/settings_java_tests.jar:$build/java/api/settings-api.jar
for jar in /usr/share/java/{junit-*,opentest4j,apiguardian-api,picocli,univocity-parsers}.jar; do
  class_path+=:$jar
done
javac --release 17 -Xlint:all,-path,-try -d "$work/classes" -cp "$class_path" \
  tests/cluster/java/com/velonix/services/settings/*.java
java -Xcheck:jni -Djava.library.path="$build/java/natives" \
  -Dtest.admin="$CLUSTER_DIR/admin.credentials" -cp "$class_path" \
  org.junit.platform.console.ConsoleLauncher --scan-classpath="$work/classes" --fail-if-no-tests \
  --disable-banner --details=none >"$work/output" 2>&1 && ! grep -q '^WARNING' "$work/output" || {
  cat "$work/output"
  exit 1
}
