# Flags and include paths that every C++ target of the project shares, as the target `build_settings`.
add_library(build_settings INTERFACE)
target_include_directories(build_settings INTERFACE ${PROJECT_SOURCE_DIR})
target_link_libraries(build_settings INTERFACE Boost::headers Threads::Threads)
target_compile_options(build_settings INTERFACE
  -Wall -Wextra -Werror
  # Boost's template statics would otherwise be unique for the whole process, which keeps a library
  # mapped after it has been unloaded, with its old statics.
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
# Without interruption points boost::shared_mutex needs no library at run time.
target_compile_definitions(build_settings INTERFACE BOOST_THREAD_DONT_PROVIDE_INTERRUPTIONS)

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
