#!/bin/bash
# The story where the folder for temporary files may not hold programs, or is full: the message says so,
# and the property that it names helps.
#
#   temporary_folder.sh repository
source "$(dirname "$0")/story.sh"
compile_story
property=com.velonix.services.settings.extraction.path
mkdir mounted other
run=("$java_home/bin/java" "-Djava.io.tmpdir=$work/mounted" -cp "$jar:classes")

# refused_on options reason: the message has the reason on a file system that is mounted so.
refused_on() {
  if ! mount -t tmpfs -o "$1" none mounted 2>refusal; then
    echo "temporary folder ($1): skipped, because nothing may be mounted here: $(cat refusal)"
    exit
  fi
  trap 'umount "$work/mounted"; rm -rf "$work"' EXIT
  if "${run[@]}" story.Story >output 2>&1; then fail "$1: the libraries were loaded from there"; fi
  grep -q "\"$work/mounted\": .*$2.* Name another folder by -D$property=" output ||
    fail "$1: $(cat output)"
  [[ -z $(ls mounted) ]] || fail "$1: left behind: $(ls -R mounted)"
  tell_story "temporary folder ($1), with the property" "${run[@]}" "-D$property=$work/other" story.Story
  umount mounted
  trap 'rm -rf "$work"' EXIT
}
refused_on noexec,size=64m "may not hold programs"
refused_on size=1m "No space left on device"
