#!/bin/bash
# Builds one program against each form in which the C++ libraries are delivered, in clean folders, and
# compares its output:
#
#   run.sh BUILD     a build for the folders of the system (the preset `package`)
set -euo pipefail
build=$(realpath "$1")
here=$(dirname "$(realpath "$0")")
source=$(realpath "$here/../../..")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export JAVA_HOME=${JAVA_HOME:-/usr/lib/jvm/java-17-openjdk-amd64}
export CCACHE_BASEDIR=$source CCACHE_NOHASHDIR=1
fail() {
  echo "FAILED: $1"
  exit 1
}

# runs_the_story name program: whether the program's output is that of story.txt.
runs_the_story() {
  "$2" "$source/examples/cpp/editor.xml" >"$work/output" || fail "$1: the program has failed"
  diff "$here/story.txt" "$work/output" || fail "$1: another output"
  echo "   $1: works"
}

# quietly command...: prints the output of the command only if it fails.
quietly() {
  "$@" >"$work/log" 2>&1 || { cat "$work/log"; fail "$*"; }
}

configure_and_build() {
  quietly cmake -G Ninja -S "$here/$1" -B "$work/$1" "${@:2}"
  quietly cmake --build "$work/$1"
}

find_package() {
  configure_and_build find_package "-DCMAKE_PREFIX_PATH=$1/usr"
  runs_the_story "$2, find_package" "$work/find_package/story"
  rm -rf "$work/find_package"
}

# The flags come from the pkg-config file alone, so each header must do with them too.
pkg_config() {
  local libraries=$1/usr/lib/$(g++ -print-multiarch) flags
  local -x PKG_CONFIG_PATH=$libraries/pkgconfig
  read -ra flags <<<"$(pkg-config --cflags --libs nativesettings)"
  quietly g++ -std=c++17 -Wall -Wextra -Werror "$here/story.cpp" -o "$work/story" \
    "${flags[@]}" "-Wl,-rpath,$libraries"
  runs_the_story "$2, pkg-config" "$work/story"
  local includes=$1/usr/include/nativesettings header
  while read -r header; do
    echo "#include \"$header\"" >"$work/header.cpp"
    quietly g++ -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only "${flags[@]}" "$work/header.cpp"
  done < <(cd "$includes" && find base values service -name '*.h' -not -name '*-inl.h')
}

# Installed in one folder, and moved to another.
installed() {
  DESTDIR=$work/first quietly cmake --install "$build"
  mv "$work/first" "$work/moved"
  find_package "$work/moved" "installed"
  pkg_config "$work/moved" "installed"
}

subproject() {
  configure_and_build subproject "-DNATIVESETTINGS_SOURCE=$source" \
    "-DCMAKE_CXX_COMPILER_LAUNCHER=$(command -v ccache || true)"
  runs_the_story "subproject" "$work/subproject/story"
  local command
  command=$(grep -m1 '"command":.*story.cpp' "$work/subproject/compile_commands.json")
  for leak in -Werror=  -fno-gnu-unique -fstack -fcf -fvisibility -Wthread-safety -D_FORTIFY \
    "-I$source " "-isystem $source " -std=gnu++17 -std=c++17; do
    [[ $command != *"$leak"* ]] || fail "the subproject gives its user $leak"
  done
  [[ $(ctest --test-dir "$work/subproject" -N) == *"Total Tests: 0"* ]] ||
    fail "the subproject gives its user tests"
}

# The packages, in a root of their own that believes to have all packages of this machine.
packages() {
  local root=$work/root
  quietly cpack --config "$build/CPackConfig.cmake" -B "$work/packages"
  mkdir -p "$root/var/lib/dpkg/"{info,updates}
  cp /var/lib/dpkg/status "$root/var/lib/dpkg/status"
  local dpkg=(fakeroot dpkg "--root=$root" --force-script-chrootless)
  quietly "${dpkg[@]}" --install "$work"/packages/*.deb
  find_package "$root" "packages"
  pkg_config "$root" "packages"
  java_story "$root"
  readelf --dynamic "$root"/usr/lib/*/lib*settings*.so.*.* | grep -E 'R(UN)?PATH' &&
    fail "a library of the packages searches folders of its own"
  local names=()
  for package in "$work"/packages/*.deb; do names+=("$(dpkg-deb --field "$package" Package)"); done
  quietly "${dpkg[@]}" --purge "${names[@]}"
  [[ -z $(find "$root" -path "$root/var" -prune -o -not -type d -print) ]] ||
    fail "the packages leave files behind"
  echo "   packages: removed"
}

# The jar of the package with the libraries of the packages, by the names that Java looks for.
java_story() {
  local jar=$1/usr/share/java/nativesettings.jar
  quietly "$JAVA_HOME/bin/javac" -cp "$jar" -d "$work/classes" \
    "$source/examples/java/ReadmeExample.java"
  SETTINGS_USERDIR=$work/user SETTINGS_FACTORYDIR=$source/examples/data/factory \
    "$JAVA_HOME/bin/java" "-Djava.library.path=$1/usr/lib/jni" -cp "$jar:$work/classes" \
    ReadmeExample >"$work/output"
  [[ $(<"$work/output") == $'Font size 11\nFont size 14 from USER' ]] ||
    fail "packages, Java: $(<"$work/output")"
  echo "   packages, Java: works"
}

installed
subproject
packages
