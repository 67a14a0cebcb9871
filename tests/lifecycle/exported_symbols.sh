#!/bin/bash
# Prints the symbols that a library exports, or compares them with a list, so that an interface never
# changes by accident.
#
#   exported_symbols.sh LIBRARY          prints them; a release that means to change the interface
#                                        replaces the list by the output
#   exported_symbols.sh LIBRARY LIST     fails if they are not those of the list
#
# Of the weak symbols, which depend on the compiler, only the type information of our own classes and
# our options for hosts are in it; the others come from templates.
set -euo pipefail
export LC_ALL=C
library=$1
own='(zlutil|KORVEN|zvm|jzi|base|nativesettings|IUserException|IMsgIDException|Exception<KORVEN)'
shown() {
  nm --dynamic --defined-only --demangle --without-symbol-versions "$library" |
    sed -E 's/^[0-9a-f]+ //' |
    grep -E "^([TDBR] |[WV] ((vtable|typeinfo) for $own|${own}[^ (]*\())" |
    cut -c 3- | sort -u
}

if [[ $# -eq 1 ]]; then
  shown
  exit
fi
if nm --dynamic --demangle "$library" | awk '$2 == "u"' | grep .; then
  echo "these unique symbols would keep the library mapped"
  exit 1
fi
diff "$2" <(shown) || {
  echo "The library exports other symbols (>) than $2 lists (<)."
  echo "If that is meant: tests/lifecycle/exported_symbols.sh LIBRARY > LIST"
  exit 1
}
echo "the exported symbols are as expected"
