# The libraries as programs outside of this project see them, installed or from its build:
#
#   nativesettings::service   libsettingshost, with the headers of the settings service
#   nativesettings::bridge    libnativesettings, with the contract of the Java layer as well
#
# They carry the headers of the contracts and what these need, and no flag of this project.

# show_headers(target header...)
#
# Lets users of the target include these headers and no other file of the source tree: from a folder
# with links to them, or from where they are installed.
function(show_headers target)
  set(links ${PROJECT_BINARY_DIR}/include/${target})
  file(REMOVE_RECURSE ${links})
  foreach(header IN LISTS ARGN)
    cmake_path(GET header PARENT_PATH folder)
    file(MAKE_DIRECTORY ${links}/${folder})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${header} ${links}/${header} SYMBOLIC)
  endforeach()
  target_include_directories(${target} INTERFACE
    $<BUILD_INTERFACE:${links}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/nativesettings>)
  set_target_properties(${target} PROPERTIES CONTRACT_HEADERS "${ARGN}")
endfunction()

file(GLOB service_headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
  ${PROJECT_SOURCE_DIR}/service/*.h)
show_headers(settingshost base/export.h base/text.h values/value_kinds.h ${service_headers})
target_link_libraries(settingshost INTERFACE Boost::headers Threads::Threads)
target_compile_definitions(settingshost INTERFACE ${contract_definitions})
target_compile_features(settingshost INTERFACE cxx_std_17)
set_target_properties(settingshost PROPERTIES EXPORT_NAME service)
add_library(nativesettings::service ALIAS settingshost)

if(NATIVESETTINGS_JAVA)
  show_headers(nativesettings bridge/class_slot.h bridge/cons_info.h bridge/java_layer.h)
  target_link_libraries(nativesettings INTERFACE settingshost)
  set_target_properties(nativesettings PROPERTIES EXPORT_NAME bridge)
  add_library(nativesettings::bridge ALIAS nativesettings)
endif()
