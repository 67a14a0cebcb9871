#!/bin/bash
# Checks that the native libraries in the jar are hardened, that the jar has the libraries that they
# need and that not every system has, and that the dynamic linker looks for these only in their own
# folder and in those of the system, and takes the system's.
#
#   bundled_libraries.sh java-home jar test-classes
set -euo pipefail
java_home=$1 jar=$2 classes=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0
fail() {
  echo "FAILED: $1"
  failed=1
}

cd "$work"
"$java_home/bin/jar" --extract --file "$jar" native META-INF
libraries=(native/*/*.so*)
[[ ${#libraries[@]} -eq 3 ]] || fail "three libraries expected, found ${libraries[*]}"
for library in "${libraries[@]}"; do
  name=${library##*/}
  dynamic=$(readelf --dynamic --wide "$library")
  search=$(sed -n 's/.*(R\(UN\)\?PATH).*\[\(.*\)\]/\2/p' <<<"$dynamic")
  [[ -z $search || $search == '$ORIGIN' ]] || fail "$name searches $search"
  grep -q 'FLAGS_1.* NOW' <<<"$dynamic" || fail "$name binds its symbols late"
  readelf --program-headers --wide "$library" | grep GNU_RELRO >relro || fail "$name has no RELRO"
  readelf --dyn-syms --wide "$library" >symbols
  grep -q '__stack_chk_fail' symbols || fail "$name does not check its stack"
  # The debug information has the options of each compilation unit.
  readelf --debug-dump=info --dwarf-depth=1 "$library" | grep DW_AT_producer >units || true
  [[ -s units ]] || fail "$name does not tell how it was compiled"
  for option in stack-protector-strong stack-clash-protection cf-protection; do
    if grep -v -e "-f$option" units; then fail "$name was compiled in part without -f$option"; fi
  done
done
grep -q '__[a-z]*_chk' <(nm --dynamic native/*/libsettingshost.so.*) ||
  fail "the host does not check its buffers"

# Every system with a JRE has the C and the C++ library; libcurl is needed with a cluster only.
everywhere='^(libc|libm|libgcc_s|libstdc\+\+|ld-linux-x86-64)\.so'
for library in "${libraries[@]}" native/*/lib/*; do
  for need in $(readelf --dynamic --wide "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
    [[ $need =~ $everywhere || $need == libsettingshost.so.* ||
      $library-$need == *etcd.so-libcurl.so.4 || -f $(echo native/*/lib)/$need ]] ||
      fail "${library##*/} needs $need, which the jar does not have"
  done
done
for library in native/*/lib/*; do
  grep -q "^  ${library##*/} " META-INF/NOTICE || fail "the NOTICE does not name $library"
done

mkdir temp
LD_DEBUG=libs LD_DEBUG_OUTPUT="$work/linker" "$java_home/bin/java" "-Djava.io.tmpdir=$work/temp" \
  -Djava.library.path=/nowhere -cp "$jar:$classes" \
  'com.velonix.services.settings.LoadingTest$Child' >output
grep -q 'value 42' output || fail "the jar does not work: $(cat output)"
sed -n 's/.*trying file=//p' linker.* | sort -u | xargs realpath --canonicalize-missing >tried
grep -q 'libtbb' tried || fail "the linker has not told what it tries"
allowed="^($(realpath "$work")/temp/nativesettings-[0-9]+|$(realpath "$java_home")|/lib|/usr/lib)/"
if grep -vE "$allowed" tried; then fail "the linker has looked at these files"; fi
sed -n 's/.*calling init: //p' linker.* | xargs realpath --canonicalize-missing >used
for library in native/*/lib/*; do
  grep "/${library##*/}" used | grep -qv "^$work" || fail "the system's ${library##*/} is not used"
done

[[ $failed -eq 0 ]] && echo "the libraries in the jar are as expected"
exit "$failed"
