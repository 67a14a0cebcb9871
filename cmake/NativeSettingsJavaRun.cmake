# Tests with a JVM. Every one of them runs under -Xcheck:jni, and fails if it prints what
# JNI_WARNINGS matches: the JVM's complaints about native code. Beside the functions below:
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

# add_jvm_test(name
#   [JAVA java]               the launcher; that of the build unless said otherwise
#   [LAUNCHED_BY command...]  a program that is given the command line of Java
#   [EXPECT regex]            what the output must match; then the exit code does not count
#   [FORBID regex]            what it must not match, beside JNI_WARNINGS
#   [ENVIRONMENT entry...] [FIXTURES fixture...] [TIMEOUT seconds]
#   [NO_LEAK_CHECK]           for a program that owns memory to the last, on purpose
#   ARGUMENTS argument...     options, class and arguments for the launcher
# )
function(add_jvm_test name)
  cmake_parse_arguments(test "NO_LEAK_CHECK" "JAVA;EXPECT;FORBID;TIMEOUT"
    "LAUNCHED_BY;ENVIRONMENT;FIXTURES;ARGUMENTS" ${ARGN})
  set(java ${Java_JAVA_EXECUTABLE})
  if(test_JAVA)
    set(java ${test_JAVA})
  endif()
  set(timeout 120)
  if(test_TIMEOUT)
    set(timeout ${test_TIMEOUT})
  endif()
  set(environment ${test_ENVIRONMENT} ${JAVA_SANITIZER_ENVIRONMENT})
  if(test_NO_LEAK_CHECK)
    list(TRANSFORM environment REPLACE "detect_leaks=1" "detect_leaks=0")
  endif()
  set(forbidden "${JNI_WARNINGS}|ERROR: [A-Za-z]+Sanitizer")
  if(test_FORBID)
    string(APPEND forbidden "|${test_FORBID}")
  endif()
  add_test(NAME ${name}
    COMMAND ${test_LAUNCHED_BY} ${java} -Xcheck:jni -XX:-CreateCoredumpOnCrash
      -XX:ErrorFile=${CMAKE_CURRENT_BINARY_DIR}/hs_err_%p.log ${test_ARGUMENTS})
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "${environment}" FIXTURES_REQUIRED "${test_FIXTURES}" LABELS jvm TIMEOUT ${timeout}
    FAIL_REGULAR_EXPRESSION "${forbidden}")
  if(test_EXPECT)
    set_tests_properties(${name} PROPERTIES PASS_REGULAR_EXPRESSION "${test_EXPECT}")
  endif()
endfunction()

# add_clean_directories(fixture directory...)
#
# A fixture: before the tests that require it, the directories are there and empty.
function(add_clean_directories fixture)
  list(JOIN ARGN " " directories)
  add_test(NAME ${fixture}.clean
    COMMAND sh -c "rm -rf ${directories} && mkdir -p ${directories}")
  set_tests_properties(${fixture}.clean PROPERTIES FIXTURES_SETUP ${fixture})
endfunction()

# discover_jvm_tests(program entry...)
#
# The tests of a program that embeds a JVM, with these entries in their environment.
function(discover_jvm_tests program)
  gtest_discover_tests(${program} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300 LABELS jvm)
  # gtest_discover_tests keeps only the first of several environment entries, so they are set later.
  set(later ${CMAKE_CURRENT_BINARY_DIR}/${program}_environment.cmake)
  file(WRITE ${later} "set_tests_properties(\${${program}_TESTS} PROPERTIES ENVIRONMENT \"${ARGN};${SANITIZER_ENVIRONMENT}\")\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${later})
endfunction()
