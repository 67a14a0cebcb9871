# The rooms, lowest first, and the two libraries made of them. ARCHITECTURE.md draws the same arrows.
add_room(ns_base FOLDER base LIBRARIES TBB::tbb ${CMAKE_DL_LIBS})
add_room(ns_values FOLDER values USES ns_base LIBRARIES nlohmann_json::nlohmann_json)
add_room(ns_service FOLDER service USES ns_base ns_values)

add_room(host_os FOLDER host/os USES ns_base ns_service)
add_room(host_process FOLDER host/process USES ns_base ns_service)
add_room(host_events FOLDER host/events USES ns_base ns_service)
add_room(host_tree FOLDER host/tree USES ns_base ns_service ns_values host_events)
add_room(host_change FOLDER host/change
  USES ns_base ns_service ns_values host_os host_events host_tree)
add_room(host_files FOLDER host/files
  USES ns_base ns_service ns_values host_os host_tree LIBRARIES EXPAT::EXPAT)
add_room(host_user_store FOLDER host/user_store
  USES ns_base ns_service ns_values host_os host_tree host_change
  LIBRARIES SQLite::SQLite3 nlohmann_json::nlohmann_json)
add_room(host_shared_store FOLDER host/shared_store
  USES ns_base ns_service ns_values host_os host_tree
  LIBRARIES CURL::libcurl nlohmann_json::nlohmann_json)
add_room(host_roots FOLDER host/roots
  USES ns_base ns_service ns_values host_os host_tree host_change host_files host_user_store)

# The settings service without a JVM, for tests and fuzz targets that reach what is behind the
# contract.
collect_rooms(host_rooms ns_base ns_service ns_values host_os host_process host_events host_tree
  host_change host_files host_user_store host_roots)

# libsettingshost: the settings service, the Java layer and engine sessions. It may own threads, so it
# is never unmapped. And it is there once in a process, for all bridges: its name and its symbols carry
# the version of its interface, so that the linker refuses a bridge that was built for another.
add_library(settingshost SHARED)
target_link_libraries(settingshost PRIVATE build_settings host_rooms)
set(version_script ${CMAKE_CURRENT_BINARY_DIR}/settingshost.version)
file(CONFIGURE OUTPUT ${version_script} CONTENT "SETTINGSHOST_${NATIVESETTINGS_INTERFACE} { global: *; };\n")
target_link_options(settingshost PRIVATE -Wl,-z,nodelete -Wl,--version-script=${version_script})
set_target_properties(settingshost PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${NATIVESETTINGS_INTERFACE})

# libsettingsetcd: the store of a workgroup level that is shared on a cluster. The host loads it, from
# its own folder, only if such a cluster is configured. It brings its own copies of what the host does
# not export.
add_library(etcd_base STATIC values/stored_value.cpp values/value_json.cpp host/os/file_name.cpp
  host/os/flush_directory.cpp host/os/replace_file.cpp
  host/tree/level_order.cpp)
target_link_libraries(etcd_base PUBLIC build_settings nlohmann_json::nlohmann_json)
add_library(settingsetcd SHARED $<TARGET_OBJECTS:host_shared_store>)
target_link_libraries(settingsetcd PRIVATE etcd_base settingshost CURL::libcurl)
target_link_options(settingsetcd PRIVATE -Wl,-z,nodelete -Wl,--exclude-libs,ALL)

if(NATIVESETTINGS_JAVA)
  add_room(ns_bridge FOLDER bridge USES ns_base LIBRARIES jni_headers)
  add_room(host_javalayer FOLDER host/javalayer USES ns_base ns_bridge)
  target_sources(settingshost PRIVATE $<TARGET_OBJECTS:host_javalayer>)
  target_link_libraries(settingshost PRIVATE jni_headers)

  add_room(ns_java_values FOLDER values/java USES ns_base ns_values ns_bridge)
  add_room(ns_natives FOLDER nativesettings
    USES ns_base ns_service ns_values ns_bridge ns_java_values)
  set_source_files_properties(nativesettings/lane.cpp PROPERTIES
    COMPILE_DEFINITIONS NATIVESETTINGS_VERSION="${PROJECT_VERSION}")
  collect_rooms(bridge_rooms ns_bridge ns_java_values ns_natives)

  # The bridge brings its own conversions of text, so that it asks nothing of a host but the contract.
  add_library(bridge_base STATIC base/text.cpp)
  target_link_libraries(bridge_base PUBLIC build_settings)

  # libnativesettings: the bridge. It shows only what its contract names.
  add_library(nativesettings SHARED)
  target_link_libraries(nativesettings PRIVATE bridge_rooms bridge_base settingshost)
  target_link_options(nativesettings PRIVATE -Wl,--exclude-libs,ALL)
  set_target_properties(nativesettings PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${NATIVESETTINGS_INTERFACE})
endif()
