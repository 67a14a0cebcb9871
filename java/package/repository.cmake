# Makes a Maven repository in the folder REPOSITORY: the jar, its POM, the sources and the Javadoc.
# Variables: those of bundle.cmake, and SOURCES GENERATED JAVADOC, the folders of the Java files and of
# the documentation.
cmake_minimum_required(VERSION 3.25)
file(READ ${DATE_FILE} date)
string(STRIP "${date}" date)
file(REMOVE_RECURSE ${STAGE} ${REPOSITORY})
set(folder ${REPOSITORY}/com/velonix/nativesettings/${VERSION})
set(name ${folder}/nativesettings-${VERSION})
file(MAKE_DIRECTORY ${folder})

file(COPY_FILE ${JAR} ${name}.jar)
file(COPY_FILE ${POM} ${name}.pom)

file(COPY ${SOURCES}/com ${GENERATED}/com DESTINATION ${STAGE} FILES_MATCHING PATTERN "*.java")
file(COPY ${SOURCES}/module-info.java DESTINATION ${STAGE})
execute_process(COMMAND_ERROR_IS_FATAL ANY
  COMMAND ${JAR_TOOL} --create --file ${name}-sources.jar --date ${date} -C ${STAGE} .)
execute_process(COMMAND_ERROR_IS_FATAL ANY
  COMMAND ${JAR_TOOL} --create --file ${name}-javadoc.jar --date ${date} -C ${JAVADOC} .)
