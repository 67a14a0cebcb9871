# The JDK: its compiler for the Java API, its headers and its JVM library for the bridge and its tests.
if(NOT DEFINED JAVA_HOME AND NOT DEFINED ENV{JAVA_HOME}
   AND EXISTS /usr/lib/jvm/java-17-openjdk-amd64)
  set(JAVA_HOME /usr/lib/jvm/java-17-openjdk-amd64)
endif()
find_package(Java 17 REQUIRED COMPONENTS Development)
find_package(JNI REQUIRED COMPONENTS JVM)
include(UseJava)
set(CMAKE_JAVA_COMPILE_FLAGS -Xlint:all -Werror -encoding UTF-8 --release 17)

add_library(jni_headers INTERFACE)
target_include_directories(jni_headers SYSTEM INTERFACE ${JAVA_INCLUDE_PATH} ${JAVA_INCLUDE_PATH2})
