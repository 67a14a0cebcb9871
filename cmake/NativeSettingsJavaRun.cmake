# What every test with a JVM needs:
#   JNI_WARNINGS               matches what -Xcheck:jni prints when native code misuses the JVM
#   SANITIZER_ENVIRONMENT      environment entries for a program that embeds a JVM, if the build has
#                              sanitizers
#   JAVA_SANITIZER_ENVIRONMENT the same for the java program, which needs some more
set(JNI_WARNINGS
  "WARNING in native method|FATAL ERROR in native method|JNI local refs: [0-9]+, exceeds|Warning: Calling other JNI")

set(SANITIZER_ENVIRONMENT "")
set(JAVA_SANITIZER_ENVIRONMENT "")
if(NATIVESETTINGS_SANITIZE MATCHES address)
  set(suppressions ${PROJECT_SOURCE_DIR}/tests/support/lsan.supp)
  set(SANITIZER_ENVIRONMENT
    "ASAN_OPTIONS=handle_segv=0:allow_user_segv_handler=1:detect_leaks=1"
    "LSAN_OPTIONS=suppressions=${suppressions}:print_suppressions=0:use_tls=0"
    "UBSAN_OPTIONS=print_stacktrace=1")
  # The java program is not instrumented, so the runtime has to be there before it; and the C++
  # library with it, or the first exception thrown finds no interceptor.
  set(preload "")
  foreach(library libasan.so libstdc++.so.6)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
      OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND preload ${file})
  endforeach()
  list(JOIN preload " " preload)
  set(JAVA_SANITIZER_ENVIRONMENT "LD_PRELOAD=${preload}" ${SANITIZER_ENVIRONMENT})
endif()
