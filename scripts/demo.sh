#!/bin/bash
# Builds the project and runs the demo on the example settings of an engineering application, after
# installing the packages for that (scripts/install_packages.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh
scripts/build.sh release --target settings_java_examples

user_dir=$(mktemp -d)
trap 'rm -rf "$user_dir"' EXIT
export SETTINGS_USERDIR=$user_dir
export SETTINGS_FACTORYDIR=$PWD/examples/data/factory
export SETTINGS_WORKGROUPDIR=$PWD/examples/data/workgroup
java=java
[[ -x /usr/lib/jvm/java-17-openjdk-amd64/bin/java ]] &&
  java=/usr/lib/jvm/java-17-openjdk-amd64/bin/java
demo() {
  "$java" -cp build/release/java/nativesettings.jar:build/release/examples/java/settings_java_examples.jar \
    demo.Demo examples/data
}
demo
echo
echo "== A second run, in a new process"
demo | sed -n '/^== Values of an earlier run/,/^$/p'
