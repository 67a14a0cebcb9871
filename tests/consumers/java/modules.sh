#!/bin/bash
# The story as classes, as a module, in an image by jlink and in a package by jpackage; the settings in
# two module layers; then what Java says on newer JDKs, which want to be told that native libraries may
# be loaded.
#
#   modules.sh repository
source "$(dirname "$0")/story.sh"
compile_story
native_access=--enable-native-access=com.velonix.settings

tell_story "class path" "$java_home/bin/java" -cp "$jar:classes" story.Story
tell_story "module path" "$java_home/bin/java" -p "$jar:module" -m story/story.Story

# The blank keeps jlink from reading the value as an option of its own.
"$java_home/bin/jlink" -p "$jar:module" --add-modules story --launcher story=story/story.Story \
  --add-options=" $native_access" --output image
tell_story "jlink" image/bin/story

"$java_home/bin/jpackage" --type app-image --name story --dest package -p "$jar:module" \
  --module story/story.Story --java-options "$native_access"
tell_story "jpackage" package/story/bin/story

"$java_home/bin/java" -p "$jar" --describe-module com.velonix.settings |
  sed 's/ file:.*//' >description
diff - description <<EXPECTED || fail "the module is another one"
com.velonix.settings@$version
exports com.velonix.services.settings
exports com.velonix.services.settings.validators
exports com.velonix.util.types
requires java.base mandated
EXPECTED

SETTINGS_USERDIR=$work/user "$java_home/bin/java" "$sources/Layers.java" "$jar" >output 2>&1 ||
  fail "module layers: $(cat output)"
[[ $(grep -c '^the settings of the process$' output) -eq 2 ]] || fail "module layers: $(cat output)"
echo "module layers: each has its bridge"

# Nothing listens there; the host gets so far only with the library for it, which the jar has.
rm -rf user
SETTINGS_USERDIR=$work/user SETTINGS_WORKGROUP=https://127.0.0.1:9/none SETTINGS_WORKGROUP_WAIT=100 \
  "$java_home/bin/java" -cp "$jar:classes" story.Story >output 2>&1 || fail "shared: $(cat output)"
grep -q "connect to 127.0.0.1" output || fail "shared workgroup level: $(cat output)"
echo "shared workgroup level: the library of the jar is used"

newest=
for candidate in /usr/lib/jvm/*/bin/java; do
  feature=$("$candidate" -version 2>&1 | sed -n '1s/.* version "\([0-9]*\).*/\1/p')
  [[ ${feature:-0} -lt 24 ]] || newest=$candidate
done
if [[ -z $newest ]]; then
  echo "native access: skipped, because there is no JDK 24 or later in /usr/lib/jvm"
  exit
fi
tell_story "native access for the module" "$newest" --illegal-native-access=deny \
  "$native_access" -p "$jar:module" -m story/story.Story
tell_story "native access for the class path" "$newest" --illegal-native-access=deny \
  --enable-native-access=ALL-UNNAMED -cp "$jar:classes" story.Story

# refused advice argument...: Java refuses, and the message has the advice.
refused() {
  if "$newest" --illegal-native-access=deny "${@:2}" >output 2>&1; then fail "not refused"; fi
  grep -q -e "$1\." output || fail "$(cat output)"
}
refused "Start Java with $native_access" \
  -p "$jar:module" -m story/story.Story
refused "Start Java with --enable-native-access=ALL-UNNAMED" -cp "$jar:classes" story.Story
refused "must call enableNativeAccess of its ModuleLayer.Controller" "$sources/Layers.java" "$jar"
echo "refused native access: the messages say how to enable it"
