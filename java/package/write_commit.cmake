# Writes two files, unless they are up to date: COMMIT_FILE, the commit of the source in SOURCE_DIR, and
# DATE_FILE, its date, which all entries of the jars bear: a commit always makes the same jars.
set(commit unknown)
set(date 1980-01-01T00:00:02Z)  # the first one that a jar can have
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  string(TIMESTAMP date "%Y-%m-%dT%H:%M:%SZ" UTC)
endif()

function(git result)
  execute_process(COMMAND git -C ${SOURCE_DIR} ${ARGN}
    OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failed)
  if(failed)
    set(output failed)
  endif()
  set(${result} "${output}" PARENT_SCOPE)
endfunction()

# Empty at the top of a repository: sources without one may lie in somebody else's.
git(prefix rev-parse --show-prefix)
if(prefix STREQUAL "")
  git(commit describe --always --dirty --abbrev=40 --exclude=*)
  git(date log -1 --format=%cI)
endif()
file(CONFIGURE OUTPUT ${COMMIT_FILE} CONTENT "${commit}\n")
file(CONFIGURE OUTPUT ${DATE_FILE} CONTENT "${date}\n")
