# Sourced by the scripts of this folder. They are given a Maven repository with the jar and its POM, and
# work in the folder $work, which is empty at first and removed at the end.
set -euo pipefail
repository=$(realpath "$1")
sources=$(realpath "$(dirname "$0")")
java_home=${JAVA_HOME:-/usr/lib/jvm/java-17-openjdk-amd64}
jar=$(ls "$repository"/com/velonix/nativesettings/*/nativesettings-[0-9]*[0-9].jar)
version=$(basename "$(dirname "$jar")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() {
  echo "FAILED: $1"
  exit 1
}

# The classes of the story, as a module or without one, in the folder of that name.
compile_story() {
  "$java_home/bin/javac" -Xlint:all -Werror --release 17 -d module -p "$jar" "$sources"/src/story/*.java \
    "$sources/src/module-info.java"
  "$java_home/bin/javac" -Xlint:all -Werror --release 17 -d classes -cp "$jar" "$sources"/src/story/*.java
}

# tell_story name command...: runs the story with settings of its own, and checks its output.
tell_story() {
  local name=$1 expected=$'Refused: 13 is odd\nFont size 14 from USER'
  rm -rf user && mkdir user
  SETTINGS_USERDIR=$work/user "${@:2}" >output 2>&1 || fail "$name: $(cat output)"
  [[ $(cat output) == "$expected" ]] || fail "$name: $(cat output)"
  echo "$name: the story is told"
}
