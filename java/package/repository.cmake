# Makes one artifact of the Maven repository in the folder REPOSITORY: the jar, its POM, the sources and
# the Javadoc. Variables:
#   ARTIFACT VERSION   its name and version       JAR POM    the files
#   SOURCES            folders with Java files    JAVADOC    the folder of the documentation
#   DATE_FILE          the date of all entries    JAR_TOOL   the program jar
#   STAGE              a folder to work in
cmake_minimum_required(VERSION 3.25)
file(READ ${DATE_FILE} date)
string(STRIP "${date}" date)
set(artifact_folder ${REPOSITORY}/com/velonix/${ARTIFACT})
file(REMOVE_RECURSE ${STAGE} ${artifact_folder})
set(folder ${artifact_folder}/${VERSION})
set(name ${folder}/${ARTIFACT}-${VERSION})
file(MAKE_DIRECTORY ${folder})

file(COPY_FILE ${JAR} ${name}.jar)
file(COPY_FILE ${POM} ${name}.pom)

foreach(source IN LISTS SOURCES)
  file(COPY ${source}/com DESTINATION ${STAGE} FILES_MATCHING PATTERN "*.java")
  if(EXISTS ${source}/module-info.java)
    file(COPY ${source}/module-info.java DESTINATION ${STAGE})
  endif()
endforeach()
execute_process(COMMAND_ERROR_IS_FATAL ANY
  COMMAND ${JAR_TOOL} --create --file ${name}-sources.jar --date ${date} -C ${STAGE} .)
execute_process(COMMAND_ERROR_IS_FATAL ANY
  COMMAND ${JAR_TOOL} --create --file ${name}-javadoc.jar --date ${date} -C ${JAVADOC} .)
