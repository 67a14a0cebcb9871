# Installation, in four components: runtime (the host), development (headers, names to link with), java
# (the bridge and the jar) and docs.
install(TARGETS settingshost
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development)
if(NATIVESETTINGS_JAVA)
  install(TARGETS nativesettings
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT java NAMELINK_COMPONENT development)
  get_target_property(bundle_jar nativesettings_jar JAR_FILE)
  install(FILES ${bundle_jar} DESTINATION ${CMAKE_INSTALL_DATADIR}/java COMPONENT java)
endif()
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT docs)
