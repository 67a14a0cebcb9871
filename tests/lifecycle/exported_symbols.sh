#!/bin/bash
# Checks the dynamic symbols of the bridge against the list of those that it is meant to export.
set -euo pipefail
expected=$(sort <<'LIST'
JNI_OnLoad
JNI_OnUnload
nativesettings::fileNotFoundException
nativesettings::illegalStateException
nativesettings::runtimeException
nativesettings::settingAccessException
nativesettings::settingLevelRuntimeException
nativesettings::settingNameDuplicationException
nativesettings::settingNotFoundException
nativesettings::settingUnsupportedTypeRuntimeException
nativesettings::settingValidationException
nativesettings::unsupportedOperationException
LIST
)
# Strong definitions; weak ones come from templates whose types are the service's and must be shared.
shown=$(nm --dynamic --defined-only --demangle "$1" |
  awk '$2 ~ /^[TDBRG]$/ { $1 = ""; $2 = ""; sub(/^ +/, ""); print }' | sort)
diff <(echo "$expected") <(echo "$shown")
if nm --dynamic --demangle "$1" | awk '$2 == "u"' | grep .; then
  echo "these unique symbols would keep the library mapped"
  exit 1
fi
echo "the exported symbols are as expected"
