# Installation, in six components:
#
#   runtime       the host
#   cluster       the library with which the host shares the workgroup level on a cluster
#   development   headers, and what CMake and pkg-config need to find them
#   java          the bridge and the jar
#   tools         the program settings
#   docs          the documents, and the schema of settings files
include(CMakePackageConfigHelpers)

# In a folder of the system the linker finds a library by itself; elsewhere the libraries find each
# other (CMAKE_INSTALL_RPATH).
set(kind_of_jar JAR_FILE)
if(CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
  set_target_properties(settingshost settingsetcd PROPERTIES INSTALL_RPATH "")
  if(NATIVESETTINGS_TOOLS)
    set_target_properties(settings PROPERTIES INSTALL_RPATH "")
  endif()
  if(NATIVESETTINGS_JAVA)
    set_target_properties(nativesettings PROPERTIES INSTALL_RPATH "")
    set(kind_of_jar PLAIN_JAR)  # without the libraries, which Java finds in lib/jni
  endif()
endif()

# install_headers(target): those that the target shows to its users.
function(install_headers target)
  get_target_property(headers ${target} CONTRACT_HEADERS)
  foreach(header IN LISTS headers)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nativesettings/${folder}
      COMPONENT development)
  endforeach()
endfunction()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/nativesettings)
install(TARGETS settingshost EXPORT service
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development)
install(EXPORT service NAMESPACE nativesettings:: FILE nativesettingsService.cmake
  DESTINATION ${package_dir} COMPONENT development)
install_headers(settingshost)
install(TARGETS settingsetcd LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT cluster)

if(NATIVESETTINGS_TOOLS)
  install(TARGETS settings RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(FILES ${PROJECT_BINARY_DIR}/command_line/settings.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES command_line/completions/settings.bash RENAME settings
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
  install(FILES command_line/completions/_settings
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tools)
endif()

if(NATIVESETTINGS_JAVA)
  install(TARGETS nativesettings EXPORT bridge
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT java NAMELINK_COMPONENT development)
  install(EXPORT bridge NAMESPACE nativesettings:: FILE nativesettingsBridge.cmake
    DESTINATION ${package_dir} COMPONENT development)
  install_headers(nativesettings)

  # A folder for java.library.path: the names that Java looks for, which belong to no version; and
  # that for which the host looks beside itself.
  file(RELATIVE_PATH to_libraries /lib/jni /${CMAKE_INSTALL_LIBDIR})
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/jni)
  foreach(library settingshost nativesettings settingsetcd)
    set(link ${PROJECT_BINARY_DIR}/jni/lib${library}.so)
    set(suffix .${NATIVESETTINGS_INTERFACE})
    set(component java)
    if(library STREQUAL "settingsetcd")
      set(suffix "")
      set(component cluster)
    endif()
    file(CREATE_LINK ${to_libraries}/lib${library}.so${suffix} ${link} SYMBOLIC)
    install(FILES ${link} DESTINATION lib/jni COMPONENT ${component})
  endforeach()
  get_target_property(jar nativesettings_jar ${kind_of_jar})
  get_target_property(prefs_jar settings_prefs JAR_FILE)
  set(testing_jar "")
  if(TARGET settings_testing)
    get_target_property(testing_jar settings_testing JAR_FILE)
  endif()
  install(FILES ${jar} ${prefs_jar} ${testing_jar} DESTINATION ${CMAKE_INSTALL_DATADIR}/java COMPONENT java)
endif()

configure_package_config_file(cmake/nativesettingsConfig.cmake.in nativesettingsConfig.cmake
  INSTALL_DESTINATION ${package_dir} PATH_VARS CMAKE_INSTALL_LIBDIR)
# As the numbers of the versions promise: see NATIVESETTINGS_INTERFACE.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
else()
  set(compatibility SameMajorVersion)
endif()
write_basic_package_version_file(nativesettingsConfigVersion.cmake COMPATIBILITY ${compatibility})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/nativesettingsConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/nativesettingsConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

file(RELATIVE_PATH to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
list(TRANSFORM contract_definitions PREPEND -D OUTPUT_VARIABLE definition_flags)
configure_file(cmake/nativesettings.pc.in nativesettings.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/nativesettings.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT docs)
install(FILES docs/settings.xsd DESTINATION ${CMAKE_INSTALL_DATADIR}/nativesettings COMPONENT docs)
