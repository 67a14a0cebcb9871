#!/bin/bash
# Installs the Debian packages that building and testing need, if any of them is missing or older than
# the distribution's. Says what it installs. Works as root, or with sudo.
#
#   scripts/install_packages.sh bench      also what the benchmarks measure beside and need
#   scripts/install_packages.sh coverage   also what measures coverage
#   scripts/install_packages.sh soak       also the servlet container that the soak deploys to
set -euo pipefail

packages=(
  # to build
  g++ cmake ninja-build ccache openjdk-17-jdk-headless libboost-dev libtbb-dev libexpat1-dev libsqlite3-dev
  nlohmann-json3-dev
  # to test
  libgtest-dev libbenchmark-dev junit5 clang-14 clang-format-14 clang-tidy-14 libclang-rt-14-dev binutils python3
)
case ${1:-} in
  bench)
    packages+=(pkg-config libglib2.0-dev libequinox-preferences-java libequinox-common-java
      libeclipse-osgi-java libosgi-compendium-java libcommons-configuration2-java)
    ;;
  coverage) packages+=(gcovr libjacoco-java) ;;
  soak) packages+=(libtomcat10-java) ;;
esac

# What is there in an older version than the distribution's is brought up to it: an image may come with
# one that has faults which the tests find. The lists of packages are read anew once a day.
as_root=()
[[ $(id -u) -eq 0 ]] || as_root=(sudo)
lists=/var/lib/apt/lists
if [[ -z $(find "$lists" -maxdepth 1 -name '*_Packages*' -mtime -1 -print -quit) ]]; then
  "${as_root[@]}" apt-get update -qq
fi
mapfile -t wanted < <(apt-cache policy "${packages[@]}" |
  awk '/^[^ ].*:$/ { name = substr($1, 1, length($1) - 1) }
       $1 == "Installed:" { installed = $2 }
       $1 == "Candidate:" && installed != $2 { print name }')
[[ ${#wanted[@]} -gt 0 ]] || exit 0

echo "Installing Debian packages: ${wanted[*]}"
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -qq --no-install-recommends "${wanted[@]}"
