# Debian packages, one for each component of the installation: `cpack` in a build for the folders of
# the system, such as that of the preset `package`. Their dependencies are computed from the libraries.
set(library_package libsettingshost${NATIVESETTINGS_INTERFACE})
set(NATIVESETTINGS_MAINTAINER "nativesettings maintainers <maintainers@nativesettings.invalid>"
  CACHE STRING "The maintainer of the packages")

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_NAME nativesettings)
set(CPACK_PACKAGE_CONTACT "${NATIVESETTINGS_MAINTAINER}")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
# The other libraries need the host, which is in no package of the system yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
# Programs that are packaged later get their dependency on the library from this.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_COMPONENTS_ALL runtime cluster development docs)
if(NATIVESETTINGS_JAVA)
  list(APPEND CPACK_COMPONENTS_ALL java)
endif()

if(NATIVESETTINGS_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The library. It has a tree of typed settings for each user, with the levels session, user,
workgroup and factory; validated, transactional, observed by listeners and kept safely on disk.")

set(CPACK_DEBIAN_CLUSTER_PACKAGE_NAME nativesettings-etcd)
set(CPACK_DEBIAN_CLUSTER_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_CLUSTER_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_CLUSTER_PACKAGE_DEPENDS "${library_package} (= ${version})")
set(CPACK_COMPONENT_CLUSTER_DESCRIPTION
  "The library with which a workgroup shares its level of the settings on an etcd cluster.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libnativesettings-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${library_package} (= ${version}), libboost-dev (>= 1.74)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, a CMake package and a pkg-config file for programs that use the settings service.")

set(CPACK_DEBIAN_JAVA_PACKAGE_NAME libnativesettings-java)
set(CPACK_DEBIAN_JAVA_PACKAGE_SECTION java)
set(CPACK_DEBIAN_JAVA_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_JAVA_PACKAGE_DEPENDS
  "${library_package} (= ${version}), default-jre-headless (>= 2:1.17) | java17-runtime-headless")
set(CPACK_COMPONENT_JAVA_DESCRIPTION "The Java API: /usr/share/java/nativesettings.jar, and the library through which it shares the
settings with C++ code of the same process; nativesettings-prefs.jar keeps the preferences of
java.util.prefs in the settings, and nativesettings-testing.jar is for tests of programs.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME nativesettings-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library_package} (= ${version})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "The program settings, with which administrators read, explain and change settings.")

set(CPACK_DEBIAN_DOCS_PACKAGE_NAME nativesettings-doc)
set(CPACK_DEBIAN_DOCS_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCS_PACKAGE_ARCHITECTURE all)
set(CPACK_COMPONENT_DOCS_DESCRIPTION "The documents, and the schema of settings files.")
include(CPack)
