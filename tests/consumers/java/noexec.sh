#!/bin/bash
# The story where the folder for temporary files may not hold programs: the message says so, and the
# property that it names helps.
#
#   noexec.sh repository
source "$(dirname "$0")/story.sh"
mkdir noexec other
if ! mount -t tmpfs -o noexec,size=64m none noexec 2>refusal; then
  echo "noexec: skipped, because nothing may be mounted here: $(cat refusal)"
  exit
fi
trap 'umount "$work/noexec"; rm -rf "$work"' EXIT
compile_story

run=("$java_home/bin/java" "-Djava.io.tmpdir=$work/noexec" -cp "$jar:classes")
if "${run[@]}" story.Story >output 2>&1; then fail "a library was loaded from there"; fi
property=com.velonix.services.settings.extraction.path
grep -q "\"$work/noexec\" may not hold programs.* Name another folder by -D$property=" output ||
  fail "$(cat output)"
[[ -z $(ls noexec) ]] || fail "left behind: $(ls -R noexec)"
tell_story "noexec, with the property" "${run[@]}" "-D$property=$work/other" story.Story
