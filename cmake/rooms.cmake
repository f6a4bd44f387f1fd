# purlock_room(<name> SOURCES <file>... [USES <target>...] [PRIVATE_USES <target>...])
#
# One folder, one static library purlock_<name>. USES are the rooms and libraries that its headers name too;
# PRIVATE_USES are those that only its sources need.
function(purlock_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;USES;PRIVATE_USES" ${ARGN})
  set(target purlock_${name})
  add_library(${target} STATIC ${ROOM_SOURCES})
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${target} PUBLIC ${ROOM_USES} PRIVATE purlock_options ${ROOM_PRIVATE_USES})
  purlock_compile_as_one(${target})
endfunction()
