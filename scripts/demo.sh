#!/bin/bash
# Builds the project and runs the demo on the example settings of an engineering application, after
# installing the packages for that (scripts/install_packages.sh).
#
#   scripts/demo.sh            the settings of one machine
#   scripts/demo.sh cluster    the workgroup level of several machines, on a cluster of etcd that runs
#                              on this machine meanwhile
set -euo pipefail
cd "$(dirname "$0")/.."
part=${1:-}
scripts/install_packages.sh ${part:+"$part"}
scripts/build.sh release --target settings_java_examples

work=$(mktemp -d)
export CLUSTER_DIR=$work/cluster
finish() {
  [[ ! -d $CLUSTER_DIR ]] || scripts/cluster.sh stop
  rm -rf "$work"
}
trap finish EXIT
export SETTINGS_FACTORYDIR=$PWD/examples/data/factory
java=java
[[ -x /usr/lib/jvm/java-17-openjdk-amd64/bin/java ]] &&
  java=/usr/lib/jvm/java-17-openjdk-amd64/bin/java
run() {
  "$java" -cp build/release/java/nativesettings.jar:build/release/examples/java/settings_java_examples.jar \
    "$@"
}

demo_one_machine() {
  export SETTINGS_USERDIR=$work/user SETTINGS_WORKGROUPDIR=$PWD/examples/data/workgroup
  run demo.Demo examples/data
  echo
  echo "== A second run, in a new process"
  run demo.Demo examples/data | sed -n '/^== Values of an earlier run/,/^$/p'
}

# machine NAME USER: starts a machine of that user of the cluster, which reads the file NAME.in.
machine() {
  mkfifo "$work/$1.in"
  SETTINGS_USERDIR=$work/$1 SETTINGS_WORKGROUP_CREDENTIALS=$CLUSTER_DIR/$2.credentials \
    run demo.Machine "$1" <"$work/$1.in" >>"$work/said" 2>&1 7>&- 8>&- &
}

# Prints all that the machines say up to the lines with these texts.
shown=0
expect() {
  local text attempt lines
  for text in "$@"; do
    for ((attempt = 0; attempt < 300; ++attempt)); do
      tail -n +$((shown + 1)) "$work/said" | grep -qF "$text" && break
      sleep 0.1
    done
    [[ $attempt -lt 300 ]] || { tail "$work/said" && echo "Missing: $text" && exit 1; }
  done
  lines=$(wc -l <"$work/said")
  sed -n "$((shown + 1)),${lines}p" "$work/said"
  shown=$lines
}

heading() { printf '\n== %s\n' "$1"; }

put() {
  scripts/cluster.sh ctl put /team/settings/editor/fontSize \
    "{\"type\":\"int\",\"value\":$1,\"comment\":\"as agreed\"}" >/dev/null
}

demo_cluster() {
  scripts/cluster.sh start >/dev/null
  # shellcheck disable=SC1091
  . "$CLUSTER_DIR/environment"
  touch "$work/said"
  put 14
  heading "Two machines, one with an administrator and one with a reader, and a cluster of three members"
  machine pc17 admin
  exec 7>"$work/pc17.in"
  machine pc18 reader
  exec 8>"$work/pc18.in"
  expect "pc17: started" "pc18: started"
  heading "A change with etcdctl is heard on both"
  put 16
  expect "pc17: heard" "pc18: heard"
  heading "The leader is killed; a change by a program waits for the next one and is heard"
  scripts/cluster.sh kill "$(scripts/cluster.sh leader)"
  echo 18 >&7
  expect "pc17: set 18" "pc18: heard: now font size 18"
  heading "A reader is refused, with the reason of etcd"
  echo 20 >&8
  expect "pc18: cannot set 20"
  heading "All members are gone: the running machine keeps its values and cannot change them"
  scripts/cluster.sh stop
  echo 22 >&7
  expect "pc17: cannot set 22"
  exec 7>&- 8>&-
  wait
  heading "A machine that starts now uses the copy on its disk, until the cluster is there again"
  rm "$work/pc17.in"
  machine pc17 admin
  exec 7>"$work/pc17.in"
  expect "pc17: started"
  scripts/cluster.sh start >/dev/null 7>&-  # the machine ends when nobody has its input open
  put 24
  expect "pc17: heard: now font size 24"
  exec 7>&-
  wait
}

case $part in
  '') demo_one_machine ;;
  cluster) demo_cluster ;;
  *) echo "Usage: scripts/demo.sh [cluster]" >&2 && exit 2 ;;
esac
