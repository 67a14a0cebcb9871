#!/bin/bash
# The story on a file system with a JRE, the libraries that this one needs, and nothing else: the jar
# brings what it needs itself. Then without that part of the jar, and with a shared workgroup level: the
# messages name the packages.
#
#   bare_machine.sh repository
source "$(dirname "$0")/story.sh"
if [[ $(id -u) -ne 0 ]]; then
  echo "bare machine: skipped, because only root may change the root directory"
  exit
fi
compile_story

root=$work/root
mkdir -p "$root"/{dev,tmp,application}
chmod 1777 "$root/tmp"
mknod -m 666 "$root/dev/urandom" c 1 9
"$java_home/bin/jlink" --add-modules java.base --output "$root/jre"
find "$root/jre" -type f \( -name '*.so' -o -name java \) -exec ldd {} + 2>/dev/null |
  grep -oE '/(usr/)?lib[^ ]*/(lib(c|m|z|gcc_s|stdc\+\+)|ld-linux-x86-64)\.so[^ ]*' | sort -u >libraries
xargs cp --parents --dereference -t "$root" <libraries
[[ -e $root/lib64/ld-linux-x86-64.so.2 ]] || cp --parents -L /lib64/ld-linux-x86-64.so.2 "$root"
cp "$jar" "$root/application/settings.jar"
cp -r classes "$root/application"

# The launcher does not find its own libraries without /proc.
on_bare_machine() {
  chroot "$root" /usr/bin/env -i SETTINGS_USERDIR=/user LD_LIBRARY_PATH=/jre/lib "$@"
}
cp --parents -L /usr/bin/env "$root"
run=(on_bare_machine /jre/bin/java -cp /application/settings.jar:/application/classes story.Story)
tell_story "bare machine" "${run[@]}"
[[ -z $(ls "$root/tmp") ]] || fail "left behind: $(ls -R "$root/tmp")"

# One after the other, in the order in which the linker misses them.
"$java_home/bin/jar" --extract --file "$jar"
rm -r native/*/lib
"$java_home/bin/jar" --create --no-compress --file "$root/application/settings.jar" com native
for need in libexpat.so.1:libexpat1 libsqlite3.so.0:libsqlite3-0 libtbb.so.12:libtbb12; do
  library=${need%:*} package=${need#*:}
  if "${run[@]}" >output 2>&1; then fail "$library is not needed"; fi
  grep -q "Install $library: the Debian package $package\." output || fail "$(cat output)"
  cp -L "$(ldconfig -p | awk -v name="$library" '$1 == name { print $NF; exit }')" \
    "$root/lib/x86_64-linux-gnu"
done
echo "bare machine without the jar's libraries: the messages name the packages"

"${run[0]}" SETTINGS_USERDIR=/other SETTINGS_WORKGROUP=https://127.0.0.1:9/none "${run[@]:1}" \
  >output 2>&1 ||
  fail "shared workgroup level: $(cat output)"
grep -q "Install libcurl.so.4: the Debian package libcurl4\." output || fail "$(cat output)"
echo "bare machine with a shared workgroup level: the message names libcurl4"
