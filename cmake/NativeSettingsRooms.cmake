# Rooms: the folders of the source tree, each a library of objects that names the rooms whose headers
# it may include. tests/rooms/check_rooms.py holds the include lines to it.
#
#   add_room(name FOLDER folder [USES room...] [LIBRARIES library...])
#
# `name` is the target; a room with headers only has no objects. `USES` names targets of other rooms.
function(add_room name)
  cmake_parse_arguments(room "" "FOLDER" "USES;LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${room_FOLDER}/*.cpp)
  set(folders "")
  foreach(used IN LISTS room_USES)
    get_target_property(folder ${used} ROOM_FOLDER)
    list(APPEND folders ${folder})
  endforeach()
  if(sources)
    add_library(${name} OBJECT ${sources})
    target_link_libraries(${name} PUBLIC build_settings ${room_USES} ${room_LIBRARIES})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE build_settings ${room_USES} ${room_LIBRARIES})
  endif()
  set_target_properties(${name} PROPERTIES ROOM_FOLDER ${room_FOLDER} ROOM_SOURCES "${sources}")
  list(JOIN folders " " folders)
  file(APPEND ${ROOMS_FILE} "${room_FOLDER}: ${folders}\n")
endfunction()

# collect_rooms(name room...)
#
# A library to link programs with that hold the objects of these rooms themselves. Its property
# ROOM_SOURCES has their sources.
function(collect_rooms name)
  add_library(${name} INTERFACE)
  set(all_sources "")
  foreach(room IN LISTS ARGN)
    get_target_property(sources ${room} ROOM_SOURCES)
    list(APPEND all_sources ${sources})
    if(sources)
      target_sources(${name} INTERFACE $<TARGET_OBJECTS:${room}>)
    endif()
  endforeach()
  target_link_libraries(${name} INTERFACE ${ARGN})
  set_target_properties(${name} PROPERTIES ROOM_SOURCES "${all_sources}")
endfunction()

# What check_rooms.py reads: for each room its folder, and those of the rooms that it uses.
set(ROOMS_FILE ${PROJECT_BINARY_DIR}/rooms.txt)
file(WRITE ${ROOMS_FILE} "")
