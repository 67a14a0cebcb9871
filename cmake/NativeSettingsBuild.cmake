# Flags and include paths that every C++ target of the project shares, as the target `build_settings`.
add_library(build_settings INTERFACE)
target_include_directories(build_settings INTERFACE ${PROJECT_SOURCE_DIR})
target_link_libraries(build_settings INTERFACE Boost::headers Threads::Threads)
target_compile_options(build_settings INTERFACE
  -Wall -Wextra
  # Another project's compiler may have warnings that are not known here.
  $<$<BOOL:${PROJECT_IS_TOP_LEVEL}>:-Werror>
  # Boost's template statics would otherwise be unique for the whole process, which keeps a library
  # mapped after it has been unloaded, with its old statics.
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
# What every user of the headers must define as well. Without interruption points boost::shared_mutex
# needs no library at run time.
set(contract_definitions BOOST_THREAD_DONT_PROVIDE_INTERRUPTIONS)
target_compile_definitions(build_settings INTERFACE ${contract_definitions})

if(NATIVESETTINGS_SANITIZE)
  target_compile_options(build_settings INTERFACE
    -fsanitize=${NATIVESETTINGS_SANITIZE} -fno-omit-frame-pointer)
  if(NATIVESETTINGS_SANITIZE MATCHES undefined)
    target_compile_options(build_settings INTERFACE -fno-sanitize-recover=undefined)
  endif()
  target_link_options(build_settings INTERFACE -fsanitize=${NATIVESETTINGS_SANITIZE})
else()
  target_link_options(build_settings INTERFACE -Wl,--no-undefined)
endif()

# Hardening: tables that are read-only after loading, and checks of the stack, of its pages and of where
# calls and returns go. The checks of buffers in the C library need an optimising compiler, and would
# hide from a sanitizer what it looks for.
target_compile_options(build_settings INTERFACE
  -fstack-protector-strong -fstack-clash-protection -fcf-protection)
target_link_options(build_settings INTERFACE -Wl,-z,relro,-z,now)
string(TOUPPER "${CMAKE_BUILD_TYPE}" build_type)
if(NOT NATIVESETTINGS_SANITIZE
   AND "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${build_type}}" MATCHES "-O[1-3s]")
  target_compile_options(build_settings INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()
