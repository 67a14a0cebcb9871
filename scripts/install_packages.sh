#!/bin/bash
# Installs the Debian packages that building and testing need, if any of them is missing or older than
# the distribution's, and prints their names. Works as root, or with sudo.
#
#   scripts/install_packages.sh bench      also the other libraries that the benchmarks measure
#   scripts/install_packages.sh cluster    also etcd, for a cluster on this machine
#   scripts/install_packages.sh coverage   also the tools that measure coverage
#   scripts/install_packages.sh cpp-consumers    also what makes and installs packages
#   scripts/install_packages.sh java-consumers   also Maven, for projects that use the jar
#   scripts/install_packages.sh release    also abidiff, which compares the interfaces of two releases
#   scripts/install_packages.sh soak       also Tomcat, for the redeploys of the soak
set -euo pipefail

packages=(
  # to build
  g++ cmake ninja-build ccache openjdk-17-jdk-headless libboost-dev libtbb-dev libexpat1-dev libsqlite3-dev
  nlohmann-json3-dev libcurl4-openssl-dev libcli11-dev help2man
  # to test
  libgtest-dev libbenchmark-dev junit5 clang-14 clang-format-14 clang-tidy-14 libclang-rt-14-dev binutils python3
  python3-jsonschema zsh
)
case ${1:-} in
  bench)
    packages+=(pkg-config libglib2.0-dev libequinox-preferences-java libequinox-common-java
      libeclipse-osgi-java libosgi-compendium-java libcommons-configuration2-java)
    ;;
  coverage) packages+=(gcovr libjacoco-java) ;;
  cluster) packages+=(etcd-server etcd-client openssl) ;;
  cpp-consumers) packages+=(pkg-config dpkg-dev file fakeroot) ;;
  java-consumers)
    packages+=(maven libmaven-compiler-plugin-java libmaven-resources-plugin-java libsurefire-java
      libmaven-jar-plugin-java)
    ;;
  release) packages+=(abigail-tools) ;;
  soak) packages+=(libtomcat10-java) ;;
esac

# Packages that are older than the distribution's are upgraded: the tests find faults of older ones that
# images come with. The package lists are updated once a day.
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
