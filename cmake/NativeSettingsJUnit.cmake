# The jars of JUnit 5 and its console launcher: junit_jars.
set(junit_jars "")
foreach(module
    junit-platform-console junit-platform-launcher junit-platform-engine junit-platform-commons
    junit-platform-reporting junit-jupiter-api junit-jupiter-engine junit-jupiter-params
    opentest4j apiguardian-api picocli univocity-parsers)
  find_file(${module}_JAR ${module}.jar PATHS /usr/share/java REQUIRED)
  list(APPEND junit_jars ${${module}_JAR})
endforeach()
