#!/bin/bash
# Installs the Debian packages that building and testing need, if any of them is missing. Says what it
# installs. Works as root, or with sudo.
#
#   scripts/install_packages.sh bench      also what the benchmarks measure beside and need
#   scripts/install_packages.sh coverage   also what measures coverage
set -euo pipefail

packages=(
  # to build
  g++ cmake ninja-build ccache openjdk-17-jdk-headless libboost-dev libtbb-dev libexpat1-dev libsqlite3-dev
  nlohmann-json3-dev
  # to test
  libgtest-dev libbenchmark-dev junit5 clang-14 clang-tidy-14 libclang-rt-14-dev binutils
)
case ${1:-} in
  bench)
    packages+=(python3 pkg-config libglib2.0-dev libequinox-preferences-java libequinox-common-java
      libeclipse-osgi-java libosgi-compendium-java libcommons-configuration2-java)
    ;;
  coverage) packages+=(gcovr libjacoco-java) ;;
esac

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
  [[ $status == installed ]] || missing+=("$package")
done
[[ ${#missing[@]} -gt 0 ]] || exit 0

echo "Installing Debian packages: ${missing[*]}"
as_root=()
[[ $(id -u) -eq 0 ]] || as_root=(sudo)
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
