#!/bin/bash
# Without the library for clusters, a program that is configured for one says so in one line, and
# works.
#
#   missing_library.sh SETTINGS LIBSETTINGSHOST FACTORY_DIRECTORY
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$2" "$work/$(objdump -p "$2" | awk '$1 == "SONAME" { print $2 }')"
value=$(LD_LIBRARY_PATH=$work SETTINGS_USERDIR=$work/user SETTINGS_FACTORYDIR=$3 \
  SETTINGS_WORKGROUP=http://127.0.0.1:1/team "$1" get editor.fontSize 2>"$work/errors")
[[ $value == 11 && $(wc -l <"$work/errors") == 1 ]] && grep -q 'libsettingsetcd.so' "$work/errors" || {
  echo "Value: $value"
  cat "$work/errors"
  exit 1
}
