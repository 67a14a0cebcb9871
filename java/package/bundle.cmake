# Makes nativesettings.jar: the classes, the native libraries, and the libraries that those need and
# that a JRE does not bring; and a jar without the libraries, for a system that has them. Variables:
#   CLASS_DIR     the compiled classes          JAR           the jar to make
#   NATIVE_DIR    the native libraries          JAR_TOOL      the program jar
#   LIBRARIES     their file names              STAGE         a folder to work in
#   PLATFORM      where the jar has them        VERSION       that of the project
#   PLAIN_JAR     the jar without libraries
#   COMMIT_FILE DATE_FILE NOTICE POM            files that travel, or of which parts do
cmake_minimum_required(VERSION 3.25)
file(READ ${COMMIT_FILE} commit)
file(READ ${DATE_FILE} date)
string(STRIP "${commit}" commit)
string(STRIP "${date}" date)
file(REMOVE_RECURSE ${STAGE})

# Under the names by which the linker asks for them. Other libraries are the system's everywhere.
set(natives ${STAGE}/native/${PLATFORM})
list(TRANSFORM LIBRARIES PREPEND ${NATIVE_DIR}/)
file(GET_RUNTIME_DEPENDENCIES LIBRARIES ${LIBRARIES}
  RESOLVED_DEPENDENCIES_VAR needs
  PRE_INCLUDE_REGEXES "^lib(tbb|expat|sqlite3)\\.so" PRE_EXCLUDE_REGEXES ".*")
foreach(library IN LISTS needs LIBRARIES)
  cmake_path(GET library FILENAME name)
  set(folder ${natives})
  if(library IN_LIST needs)
    set(folder ${natives}/lib)
  endif()
  file(MAKE_DIRECTORY ${folder})
  file(REAL_PATH ${library} file)
  file(COPY_FILE ${file} ${folder}/${name})
endforeach()

configure_file(${COMMIT_FILE} ${STAGE}/com/velonix/services/settings/commit COPYONLY)
configure_file(${NOTICE} ${STAGE}/META-INF/NOTICE COPYONLY)
configure_file(/usr/share/common-licenses/Apache-2.0 ${STAGE}/META-INF/licenses/Apache-2.0.txt COPYONLY)
set(maven ${STAGE}/META-INF/maven/com.velonix/nativesettings)
configure_file(${POM} ${maven}/pom.xml COPYONLY)
file(WRITE ${maven}/pom.properties
  "groupId=com.velonix\nartifactId=nativesettings\nversion=${VERSION}\n")
file(WRITE ${STAGE}.mf "Implementation-Title: nativesettings\n"
  "Implementation-Version: ${VERSION}\nImplementation-Commit: ${commit}\n"
  # Counts for `java -jar` only; other programs name the module or ALL-UNNAMED themselves.
  "Enable-Native-Access: ALL-UNNAMED\n")

set(options --date ${date} --manifest ${STAGE}.mf
  --main-class com.velonix.services.settings.SettingsVersion --module-version ${VERSION})
set(classes -C ${CLASS_DIR} module-info.class -C ${CLASS_DIR} com -C ${STAGE} com -C ${STAGE} META-INF)
execute_process(COMMAND_ERROR_IS_FATAL ANY
  COMMAND ${JAR_TOOL} --create --file ${JAR} ${options} ${classes} -C ${STAGE} native)
execute_process(COMMAND_ERROR_IS_FATAL ANY
  COMMAND ${JAR_TOOL} --create --file ${PLAIN_JAR} ${options} ${classes})
